#pragma once

#include <string>
#include <vector>

#include <QString>

namespace corvane {

// What of the data folder cannot be written to, a sentence for each thing that will not work. To be
// asked before the database is opened: closing a second descriptor of its file drops its locks.
std::vector<std::string> WriteFaults(const QString& dataFolder);

}  // namespace corvane
