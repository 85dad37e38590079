#pragma once

#include <QLatin1String>
#include <QString>

namespace corvane {

// Programs with a local socket.
inline constexpr QLatin1String kServerSocket("corvane-server");
inline constexpr QLatin1String kMapSocket("corvane-map");

// The name of a program's local socket for a data folder: a file in the folder, or on Windows a
// named pipe named after the folder.
QString LocalSocketName(const QString& dataFolder, QLatin1String program);

}  // namespace corvane
