#include "console/application.h"

#include <QIcon>

#include "console/program_icon.h"

namespace corvane {

Application::Application(int& argc, char** argv) : ServerApplication(argc, argv) {
  setDesktopFileName(QStringLiteral("corvane-server"));
  setWindowIcon(ProgramIcon());
  setQuitOnLastWindowClosed(false);
}

}  // namespace corvane
