#pragma once

#include <algorithm>
#include <chrono>

namespace corvane {

// Lets costly work in only as often as it takes a tenth of the time: all work of one session, or of
// all sessions together.
class CostGate {
 public:
  using Clock = std::chrono::steady_clock;

  // How long the next has to wait, from now; zero when it may begin.
  Clock::duration Wait() const { return std::max(myOpens - Clock::now(), Clock::duration::zero()); }
  // Closes the gate for as long as work that took so much processor time has to be made up for.
  void Charge(Clock::duration cost) {
    myOpens = std::max(myOpens, Clock::now()) + kTimesCost * cost;
  }

 private:
  static constexpr int kTimesCost = 9;

  Clock::time_point myOpens;
};

}  // namespace corvane
