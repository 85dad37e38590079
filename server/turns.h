#pragma once

#include <algorithm>
#include <chrono>

namespace corvane {

// Limits work that many sessions request to a third of the time: each piece begins at its turn, and
// other sessions are served in between.
class Turns {
 public:
  using Clock = std::chrono::steady_clock;

  // Returns when work of this expected cost may begin.
  Clock::time_point Take(Clock::duration expected) {
    const auto begin = std::max(myNext, Clock::now());
    myNext = begin + kTimesCost * expected;
    return begin;
  }
  // Delays later turns: the work cost this much more than expected.
  void Charge(Clock::duration more) {
    myNext += kTimesCost * std::max(more, Clock::duration::zero());
  }

 private:
  static constexpr int kTimesCost = 3;

  Clock::time_point myNext;
};

}  // namespace corvane
