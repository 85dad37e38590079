#include "console/program_icon.h"

#include <QSize>
#include <QString>

namespace corvane {

QIcon ProgramIcon() {
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    icon.addFile(QStringLiteral(":/icons/corvane-server-%1.png").arg(size), QSize(size, size));
  }
  return icon;
}

}  // namespace corvane
