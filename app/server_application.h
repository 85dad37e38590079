#pragma once

#include <functional>

#include <QCoreApplication>
#include <QEvent>

#include "framework/text.h"
#include "updater/version.h"

namespace corvane {

// What a ServerApplication calls, once set.
struct ApplicationHooks {
  std::function<void()> LastResort;  // called inside the catch block
  std::function<void()> Quit;
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
    try {
      return QtApplication::notify(receiver, event);
    } catch (...) {
      if (!LastResort) throw;
      LastResort();
      return false;
    }
  }

  bool event(QEvent* event) override {
    if (event->type() != QEvent::Quit || !Quit) return QtApplication::event(event);
    event->accept();
    Quit();
    return true;
  }
};

}  // namespace corvane
