#pragma once

#include <utility>

#include <QMetaObject>
#include <QObject>
#include <QThreadPool>

namespace corvane::map {

// Runs work on one thread, one piece after the other. The destructor drops pieces that have not
// begun and waits for the one that has.
class Background {
 public:
  Background() { myThread.setMaxThreadCount(1); }
  ~Background() {
    myThread.clear();
    myThread.waitForDone();
  }
  Background(const Background&) = delete;
  Background& operator=(const Background&) = delete;

  // Calls `work` on the thread, and then Post with `take` of its result.
  template <typename Work, typename Take>
  void Run(Work work, Take take) {
    myThread.start([this, work = std::move(work), take = std::move(take)] {
      Post([take, result = work()] { take(result); });
    });
  }
  // Calls `act` from Qt's loop on the thread that made this object, unless it is destroyed before.
  template <typename Act>
  void Post(Act act) {
    QMetaObject::invokeMethod(&myReceiver, std::move(act), Qt::QueuedConnection);
  }

 private:
  QObject myReceiver;
  QThreadPool myThread;
};

}  // namespace corvane::map
