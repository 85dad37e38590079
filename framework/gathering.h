#pragma once

#include <chrono>
#include <functional>

#include <QTimer>

namespace corvane {

// Calls a function a moment after something was there for it, once for all that came meanwhile: at
// most fifty times a second, however much comes, and too soon for anybody to notice the wait. Needs
// a QCoreApplication.
class Gathering {
 public:
  explicit Gathering(const std::function<void()>& act) {
    myTimer.setSingleShot(true);
    myTimer.setInterval(std::chrono::milliseconds(20));
    QObject::connect(&myTimer, &QTimer::timeout, act);
  }

  // Something is there.
  void Note() {
    if (!myTimer.isActive()) myTimer.start();
  }
  // It has been seen to.
  void Stop() { myTimer.stop(); }

 private:
  QTimer myTimer;
};

}  // namespace corvane
