#include "framework/exceptions.h"

#include <new>

#include "framework/exception_type.h"

namespace corvane {

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
