#include <QCryptographicHash>
#include <QDir>

#include "platform/local_socket_name.h"

namespace corvane {

QString LocalSocketName(const QString& dataFolder, QLatin1String program) {
  // Pipes are not in folders. Folder names ignore letter case.
  const QString folder = QDir::cleanPath(QDir(dataFolder).absolutePath()).toLower();
  const QByteArray hash = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha256);
  return program + '-' + QString::fromLatin1(hash.left(16).toHex());
}

}  // namespace corvane
