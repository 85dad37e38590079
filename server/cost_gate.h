#pragma once

#include <algorithm>
#include <chrono>

namespace corvane {

// Limits costly work to a tenth of the time, for one session or for all sessions together: after
// each piece the gate stays closed for nine times its cost.
class CostGate {
 public:
  using Clock = std::chrono::steady_clock;

  // How long the next piece of work has to wait; zero if it may begin now.
  Clock::duration Wait() const { return std::max(myOpens - Clock::now(), Clock::duration::zero()); }
  // Closes the gate after work that took this much processor time.
  void Charge(Clock::duration cost) {
    myOpens = std::max(myOpens, Clock::now()) + kTimesCost * cost;
  }

 private:
  static constexpr int kTimesCost = 9;

  Clock::time_point myOpens;
};

}  // namespace corvane
