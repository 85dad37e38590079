#include <QDir>
#include <QFile>

#include "platform/folders.h"

namespace corvane {

namespace {

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

}  // namespace corvane
