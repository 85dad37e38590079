#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>

#include <QTimer>

namespace corvane {

// Calls functions later, from Qt's loop, in the order of their times. One timer serves all.
class DelayedCalls {
 public:
  using Clock = std::chrono::steady_clock;

  DelayedCalls();

  // Calls the function at that time, unless the owner is gone by then.
  void Add(Clock::time_point time, std::weak_ptr<void> owner, std::function<void()> function);
  // Drops the waiting calls, and from now on every call that is added.
  void Stop();

 private:
  struct Call {
    std::weak_ptr<void> owner;
    std::function<void()> function;
  };

  void RunDue();
  void StartTimer();

  std::multimap<Clock::time_point, Call> myCalls;
  QTimer myTimer;
  bool myIsStopped = false;
};

}  // namespace corvane
