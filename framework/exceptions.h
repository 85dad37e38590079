#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace corvane {

// Misuse of a framework class; the text names the mistake.
class RuntimeException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;

  // The name under which the last-resort message reports the error.
  virtual std::string ClassName() const;
};

// A member of a null object was used.
class NilObjectException : public RuntimeException {
 public:
  NilObjectException();
  std::string ClassName() const override;
};

// The name to report for any exception: ClassName() of our own, the type's own name for others.
std::string ClassNameOf(const std::exception_ptr& error);

}  // namespace corvane
