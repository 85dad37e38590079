#include "console/application.h"

#include <QEvent>
#include <QIcon>

#include "console/program_icon.h"
#include "framework/text.h"
#include "updater/version.h"

namespace corvane {

Application::Application(int& argc, char** argv) : QApplication(argc, argv) {
  setOrganizationName(QStringLiteral("Corvane"));
  setApplicationName(QStringLiteral("Corvane Server"));
  setApplicationVersion(DisplayText(RunningVersion().FullVersion()));
  setDesktopFileName(QStringLiteral("corvane-server"));
  setWindowIcon(ProgramIcon());
  setQuitOnLastWindowClosed(false);
}

bool Application::notify(QObject* receiver, QEvent* event) {
  try {
    return QApplication::notify(receiver, event);
  } catch (...) {
    if (!LastResort) throw;
    LastResort();
    return false;
  }
}

bool Application::event(QEvent* event) {
  if (event->type() != QEvent::Quit || !Quit) return QApplication::event(event);
  event->accept();
  Quit();
  return true;
}

}  // namespace corvane
