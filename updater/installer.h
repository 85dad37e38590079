#pragma once

#include <QString>

namespace corvane {

// Hands the installer in that file to the system, which goes on by itself; whether it took it.
bool LaunchInstaller(const QString& file);

}  // namespace corvane
