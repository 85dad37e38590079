#pragma once

#include <chrono>
#include <functional>
#include <utility>

#include <QTimer>

namespace corvane {

// Coalesces calls: runs `act` at most once a period, however often `Note` is called. The period of
// 20 ms is too short for anybody to notice. Needs a QCoreApplication.
class Gathering {
 public:
  enum class First {
    Now,   // The first note runs `act` at once, those that follow it at the end of the period.
    Waits  // Each waits for the end of the period: `act` costs a system call, and its caller's
           // handler does not wait for that.
  };

  Gathering(std::function<void()> act, First first,
            std::chrono::milliseconds period = std::chrono::milliseconds(20))
      : myAct(std::move(act)), myFirst(first) {
    myTimer.setSingleShot(true);
    myTimer.setInterval(period);
    QObject::connect(&myTimer, &QTimer::timeout, [this] { End(); });
  }

  // There is something to do. `act` may call this.
  void Note() {
    myIsPending = true;
    if (myTimer.isActive()) return;
    if (myFirst == First::Now) return End();
    myTimer.start();
  }
  // It has been done.
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
