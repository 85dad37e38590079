#pragma once

#include <chrono>
#include <functional>
#include <utility>

#include <QTimer>

namespace corvane {

// Coalesces calls: runs `act` at most once per period, however often `Note` is called. The default
// period of 20 ms is too short for anybody to notice. Needs a QCoreApplication.
class CoalescingTimer {
 public:
  enum class First {
    Now,   // The first note runs `act` at once, later ones at the end of the period.
    Waits  // Each note waits for the end of the period: for an `act` with a system call that would
           // delay the caller's handler.
  };

  CoalescingTimer(std::function<void()> act, First first,
                  std::chrono::milliseconds period = std::chrono::milliseconds(20))
      : myAct(std::move(act)), myFirst(first) {
    myTimer.setSingleShot(true);
    myTimer.setInterval(period);
    QObject::connect(&myTimer, &QTimer::timeout, [this] { End(); });
  }

  // Requests a run of `act`, which may call this itself.
  void Note() {
    myIsPending = true;
    if (myTimer.isActive()) return;
    if (myFirst == First::Now) return End();
    myTimer.start();
  }
  // Cancels a requested run, for an owner that has done the work itself.
  void Stop() { myIsPending = false; }

 private:
  void End() {
    if (!std::exchange(myIsPending, false)) return;
    myTimer.start();
    myAct();
  }

  std::function<void()> myAct;
  First myFirst;
  bool myIsPending = false;
  QTimer myTimer;
};

}  // namespace corvane
