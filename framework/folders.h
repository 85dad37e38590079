#pragma once

#include <optional>

#include <QString>

namespace corvane {

// The current user's application-data folder, absolute, not necessarily existing: CSIDL_APPDATA on
// Windows; elsewhere what the XDG Base Directory standard says, $XDG_DATA_HOME, else
// ~/.local/share. None when the system knows no such folder.
std::optional<QString> ApplicationDataFolder();

}  // namespace corvane
