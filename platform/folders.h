#pragma once

#include <optional>

#include <QString>

namespace corvane {

// The absolute path of the current user's application-data folder, which may not exist yet:
// CSIDL_APPDATA on Windows; elsewhere, by the XDG Base Directory standard, $XDG_DATA_HOME or
// ~/.local/share. None if the system has no such folder.
std::optional<QString> ApplicationDataFolder();

// The data folder of the server that runs as a system service; it may not exist yet. None if the
// system has no such service.
std::optional<QString> ServiceDataFolder();

}  // namespace corvane
