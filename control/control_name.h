#pragma once

#include <QString>

namespace corvane {

// The name of the local socket of a data folder's server: a file in the folder, or on Windows a
// named pipe named after the folder.
QString ControlName(const QString& dataFolder);

}  // namespace corvane
