#include <QDir>

#include "control/control_name.h"

namespace corvane {

QString ControlName(const QString& dataFolder) {
  return QDir(dataFolder).absoluteFilePath(QStringLiteral("corvane-server.sock"));
}

}  // namespace corvane
