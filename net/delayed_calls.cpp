#include "net/delayed_calls.h"

#include <algorithm>
#include <utility>

namespace corvane {

using namespace std::chrono_literals;

DelayedCalls::DelayedCalls() {
  myTimer.setSingleShot(true);
  myTimer.setTimerType(Qt::PreciseTimer);
  QObject::connect(&myTimer, &QTimer::timeout, [this] { RunDue(); });
}

void DelayedCalls::Add(Clock::time_point time, std::weak_ptr<void> owner,
                       std::function<void()> function) {
  if (myIsStopped) return;
  const auto added = myCalls.emplace(time, Call{std::move(owner), std::move(function)});
  if (added == myCalls.begin()) StartTimer();
}

void DelayedCalls::Stop() {
  myIsStopped = true;
  myTimer.stop();
}

void DelayedCalls::RunDue() {
  const auto now = Clock::now();
  while (!myIsStopped && !myCalls.empty() && myCalls.begin()->first <= now) {
    const auto due = myCalls.extract(myCalls.begin());
    // The owner is kept alive during its call only.
    const std::shared_ptr<void> owner = due.mapped().owner.lock();
    if (owner != nullptr) due.mapped().function();
  }
  if (!myCalls.empty()) StartTimer();
}

void DelayedCalls::StartTimer() {
  if (myIsStopped) return;
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(myCalls.begin()->first - Clock::now());
  myTimer.start(std::max(left, 0ms));
}

}  // namespace corvane
