#pragma once

#include <functional>

#include <QCoreApplication>
#include <QEvent>
#include <QScopedValueRollback>
#include <QThread>

#include "framework/text.h"
#include "net/pass_times.h"
#include "updater/version.h"

namespace corvane {

// What a ServerApplication calls, once set.
struct ApplicationHooks {
  std::function<void()> LastResort;  // called inside the catch block
  std::function<void()> Quit;
  PassTimes* Passes = nullptr;  // gets the time that each event takes
};

// Qt's application, with a window or without. Passes exceptions that leave an event handler to
// LastResort, and requests to quit (including the desktop's at the end of the session) to Quit,
// without asking the windows.
template <typename QtApplication>
class ServerApplication : public QtApplication, public ApplicationHooks {
 public:
  ServerApplication(int& argc, char** argv) : QtApplication(argc, argv) {
    QCoreApplication::setOrganizationName(QStringLiteral("Corvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Corvane Server"));
    QCoreApplication::setApplicationVersion(DisplayText(RunningVersion().FullVersion()));
  }

  bool notify(QObject* receiver, QEvent* event) override {
    // Events that a handler sends count as its time; events of a nested loop do not.
    const bool isOwnThread = QThread::currentThread() == this->thread();
    const int level = QThread::currentThread()->loopLevel();
    if (!isOwnThread || Passes == nullptr || level == myLevel) return Deliver(receiver, event);
    const QScopedValueRollback inEvent(myLevel, level);
    Passes->Begin();
    const bool isHandled = Deliver(receiver, event);
    if (Passes != nullptr) Passes->End();
    return isHandled;
  }

  bool event(QEvent* event) override {
    if (event->type() != QEvent::Quit || !Quit) return QtApplication::event(event);
    event->accept();
    Quit();
    return true;
  }

 private:
  bool Deliver(QObject* receiver, QEvent* event) {
    try {
      return QtApplication::notify(receiver, event);
    } catch (...) {
      if (!LastResort) throw;
      LastResort();
      return false;
    }
  }

  int myLevel = -1;  // of the loop whose event is being handled
};

}  // namespace corvane
