#pragma once

#include <chrono>

#include "net/poll_loop.h"

namespace corvane {

// Sends what was written so far, as far as the system takes it.
inline void FlushNow(PollLoop& loop) {
  loop.WaitUntil([] { return true; }, PollLoop::Clock::now() + std::chrono::hours(1));
}

}  // namespace corvane
