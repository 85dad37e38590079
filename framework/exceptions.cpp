#include "framework/exceptions.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <new>
#include <typeinfo>

namespace corvane {
namespace {

// The type of the exception being handled, as its source spells it.
std::string CurrentExceptionTypeName() {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  if (type == nullptr) return "unknown exception";
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), &std::free);
  return name ? name.get() : type->name();
}

}  // namespace

std::string RuntimeException::ClassName() const {
  return "RuntimeException";
}

NilObjectException::NilObjectException()
    : RuntimeException("A member of an object that is not there was used.") {}

std::string NilObjectException::ClassName() const {
  return "NilObjectException";
}

std::string ClassNameOf(const std::exception_ptr& error) {
  if (!error) return {};
  try {
    std::rethrow_exception(error);
  } catch (const RuntimeException& exception) {
    return exception.ClassName();
  } catch (const std::bad_alloc&) {
    return "OutOfMemoryException";
  } catch (...) {
    return CurrentExceptionTypeName();
  }
}

}  // namespace corvane
