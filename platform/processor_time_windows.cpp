#include <cstdint>
#include <windows.h>

#include "platform/processor_time.h"

namespace corvane {
namespace {

// FILETIME counts 100 ns.
std::chrono::nanoseconds Duration(const FILETIME& time) {
  const auto high = static_cast<std::int64_t>(time.dwHighDateTime);
  return std::chrono::nanoseconds(100 * ((high << 32) + time.dwLowDateTime));
}

}  // namespace

std::chrono::nanoseconds ProcessorTime() {
  FILETIME created{};
  FILETIME ended{};
  FILETIME kernel{};
  FILETIME user{};
  GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user);
  return Duration(kernel) + Duration(user);
}

}  // namespace corvane
