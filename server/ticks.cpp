#include "server/ticks.h"

#include <chrono>
#include <ratio>

namespace corvane {

namespace {

using Clock = std::chrono::steady_clock;
using TickCount = std::chrono::duration<std::int64_t, std::ratio<1, 60>>;

const Clock::time_point programStart = Clock::now();

}  // namespace

std::int32_t Ticks() {
  const auto elapsed = std::chrono::floor<TickCount>(Clock::now() - programStart);
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(elapsed.count()));
}

}  // namespace corvane
