#include "console/application.h"

#include <QIcon>

namespace corvane {

Application::Application(int& argc, char** argv) : ServerApplication(argc, argv) {
  setDesktopFileName(QStringLiteral("corvane-server"));
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128, 256})
    icon.addFile(QStringLiteral(":/icons/corvane-server-%1.png").arg(size), QSize(size, size));
  setWindowIcon(icon);
  setQuitOnLastWindowClosed(false);
}

bool HasDisplay() {
  return QGuiApplication::platformName() != QLatin1String("offscreen");
}

}  // namespace corvane
