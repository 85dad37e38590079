#pragma once

#include <cstdint>

namespace corvane {

// Totals of all connections since the start.
struct TrafficCounts {
  std::uint64_t messages = 0;  // delivered
  std::uint64_t received = 0;  // bytes
  std::uint64_t sent = 0;
};

}  // namespace corvane
