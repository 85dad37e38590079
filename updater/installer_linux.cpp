#include <QDesktopServices>
#include <QUrl>

#include "updater/installer.h"

namespace corvane {

// The desktop's own handler knows the package's format and asks for the rights that it needs.
bool LaunchInstaller(const QString& file) {
  return QDesktopServices::openUrl(QUrl::fromLocalFile(file));
}

}  // namespace corvane
