#include <QDir>

#include "platform/local_socket_name.h"

namespace corvane {

QString LocalSocketName(const QString& dataFolder, QLatin1String program) {
  return QDir(dataFolder).absoluteFilePath(program + QStringLiteral(".sock"));
}

}  // namespace corvane
