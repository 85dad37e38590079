#pragma once

#include <algorithm>
#include <chrono>

namespace corvane {

// Has work that many sessions ask for be done one after the other, spread so that all of it takes a
// third of the time: however many ask, others are served in between.
class Turns {
 public:
  using Clock = std::chrono::steady_clock;

  // When the work may begin that is expected to cost so much.
  Clock::time_point Take(Clock::duration expected) {
    const auto begin = std::max(myNext, Clock::now());
    myNext = begin + kTimesCost * expected;
    return begin;
  }
  // Has those who come later wait for what it cost beyond that.
  void Charge(Clock::duration more) {
    myNext += kTimesCost * std::max(more, Clock::duration::zero());
  }

 private:
  static constexpr int kTimesCost = 3;

  Clock::time_point myNext;
};

}  // namespace corvane
