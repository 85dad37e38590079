#include <shlobj.h>

#include <QDir>

#include "platform/folders.h"

namespace corvane {

std::optional<QString> ApplicationDataFolder() {
  wchar_t folder[MAX_PATH] = L"";
  if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder))) {
    return std::nullopt;
  }
  return QDir::fromNativeSeparators(QString::fromWCharArray(folder));
}

std::optional<QString> ServiceDataFolder() {
  return std::nullopt;
}

std::optional<QString> InstanceDataFolder(const QString& /*name*/) {
  return std::nullopt;
}

QStringList ServiceInstances() {
  return {};
}

}  // namespace corvane
