#pragma once

#include <string>
#include <vector>

#include <QString>

namespace corvane {

// Checks that the server can write to its data folder. Returns a sentence for each thing that will
// not work. Call it before opening the database: it opens and closes the database file, and closing
// any descriptor of a file drops all of the process's locks on it.
std::vector<std::string> WriteFaults(const QString& dataFolder);

}  // namespace corvane
