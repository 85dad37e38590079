#pragma once

#include <cstdint>

namespace corvane {

// What went over all connections since the start.
struct Traffic {
  std::uint64_t messages = 0;  // that were delivered
  std::uint64_t received = 0;  // bytes
  std::uint64_t sent = 0;
};

}  // namespace corvane
