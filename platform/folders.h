#pragma once

#include <optional>

#include <QString>
#include <QStringList>

namespace corvane {

// The absolute path of the current user's application-data folder, which may not exist yet:
// CSIDL_APPDATA on Windows; elsewhere, by the XDG Base Directory standard, $XDG_DATA_HOME or
// ~/.local/share. None if the system has no such folder.
std::optional<QString> ApplicationDataFolder();

// The data folder of the server that runs as a system service; it may not exist yet. None if the
// system has no such service.
std::optional<QString> ServiceDataFolder();

// The same for an instance of the service; none also if it cannot have this name.
std::optional<QString> InstanceDataFolder(const QString& name);
// The names of the instances that have a data folder, ascending.
QStringList ServiceInstances();

}  // namespace corvane
