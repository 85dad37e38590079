#pragma once

#include <cerrno>
#include <system_error>

namespace corvane::swarm {

// What a system call gave; throws std::system_error where that is below 0.
inline int Checked(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

}  // namespace corvane::swarm
