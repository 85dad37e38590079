#pragma once

#include <algorithm>
#include <chrono>

namespace corvane {

// Lets costly work in, whoever asks for it, only as often as all of it together takes a tenth of
// the time.
class CostGate {
 public:
  using Clock = std::chrono::steady_clock;

  // How long the next has to wait, from now; zero when it may begin.
  Clock::duration Wait() const { return std::max(myOpens - Clock::now(), Clock::duration::zero()); }
  // Closes the gate for what work that took so long, and ended now, has to be made up for.
  void Charge(Clock::duration cost) { myOpens = Clock::now() + kTimesCost * cost; }

 private:
  static constexpr int kTimesCost = 9;

  Clock::time_point myOpens;
};

}  // namespace corvane
