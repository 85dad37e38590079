#pragma once

#include <QString>

namespace corvane {

// The name of the local socket by which a data folder's server is administered: a file in the
// folder, or on Windows a named pipe named after the folder.
QString ControlName(const QString& dataFolder);

}  // namespace corvane
