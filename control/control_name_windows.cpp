#include <QCryptographicHash>
#include <QDir>

#include "control/control_name.h"

namespace corvane {

QString ControlName(const QString& dataFolder) {
  // Pipes are not in folders. Folder names ignore letter case.
  const QString folder = QDir::cleanPath(QDir(dataFolder).absolutePath()).toLower();
  const QByteArray hash = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha256);
  return QStringLiteral("corvane-server-") + QString::fromLatin1(hash.left(16).toHex());
}

}  // namespace corvane
