#pragma once

#include <utility>

#include <QMetaObject>
#include <QObject>
#include <QThreadPool>

namespace corvane::map {

// Runs work on a thread of its own, one piece after the other. The destructor drops pieces that
// have not begun and waits for the one that has.
class Background {
 public:
  Background() { myThread.setMaxThreadCount(1); }
  ~Background() {
    myThread.clear();
    myThread.waitForDone();
  }
  Background(const Background&) = delete;
  Background& operator=(const Background&) = delete;

  // Calls `work` on the thread. Calls `take` with its result from Qt's loop on the thread that made
  // this object, unless the object is destroyed before.
  template <typename Work, typename Take>
  void Run(Work work, Take take) {
    myThread.start([this, work = std::move(work), take = std::move(take)] {
      QMetaObject::invokeMethod(
          &myReceiver, [take, result = work()] { take(result); }, Qt::QueuedConnection);
    });
  }

 private:
  QObject myReceiver;
  QThreadPool myThread;
};

}  // namespace corvane::map
