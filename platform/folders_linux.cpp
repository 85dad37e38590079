#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include "platform/folders.h"

namespace corvane {

namespace {

const QString kInstances = QStringLiteral("/var/lib/corvane-serverd/");

// A folder named by an environment variable; a relative path counts as unset.
std::optional<QString> FolderFromEnvironment(const char* variable) {
  const QString path = QFile::decodeName(qgetenv(variable));
  if (!QDir::isAbsolutePath(path)) return std::nullopt;
  return QDir::cleanPath(path);
}

}  // namespace

std::optional<QString> ApplicationDataFolder() {
  if (auto folder = FolderFromEnvironment("XDG_DATA_HOME")) return folder;
  const auto home = FolderFromEnvironment("HOME");
  if (!home) return std::nullopt;
  return QDir::cleanPath(*home + QStringLiteral("/.local/share"));
}

std::optional<QString> ServiceDataFolder() {
  return QStringLiteral("/var/lib/corvane-server");
}

std::optional<QString> InstanceDataFolder(const QString& name) {
  static const QRegularExpression kName("\\A[0-9A-Za-z][0-9A-Za-z._-]{0,63}\\z");
  if (!kName.match(name).hasMatch()) return std::nullopt;
  return kInstances + name;
}

QStringList ServiceInstances() {
  return QDir(kInstances).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
}

}  // namespace corvane
