#pragma once

#include <optional>

#include <QString>

namespace corvane {

// The current user's application-data folder, absolute, not necessarily existing: CSIDL_APPDATA on
// Windows; elsewhere what the XDG Base Directory standard says, $XDG_DATA_HOME, else
// ~/.local/share. None when the system knows no such folder.
std::optional<QString> ApplicationDataFolder();

// The data folder of the server that runs as a service of the machine, not necessarily existing;
// none where there is no such service.
std::optional<QString> ServiceDataFolder();

}  // namespace corvane
