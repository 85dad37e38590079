#pragma once

#include <QString>

namespace corvane {

// Where the server that works in a data folder is reached by this machine's own programs: a socket
// in the folder, or on Windows a named pipe that the folder gives its name.
QString ControlName(const QString& dataFolder);

}  // namespace corvane
