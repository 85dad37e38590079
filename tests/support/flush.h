#pragma once

#include <chrono>

#include "net/poll_loop.h"

namespace corvane {

// Sends all written bytes that the system takes.
inline void FlushNow(PollLoop& loop) {
  loop.WaitUntil([] { return true; }, PollLoop::Clock::now() + std::chrono::hours(1));
}

}  // namespace corvane
