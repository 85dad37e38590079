#include "framework/exception_type.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <typeinfo>

namespace corvane {

std::string CurrentExceptionTypeName() {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  if (type == nullptr) return "unknown exception";
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), &std::free);
  return name ? name.get() : type->name();
}

}  // namespace corvane
