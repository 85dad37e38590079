#pragma once

#include <string>

namespace corvane {

class DatabaseConnection;

// The tables and columns that the server reads and writes and that the database lacks, in words for
// the operator; empty when all are there, or the database cannot be read.
std::string MissingFromSchema(DatabaseConnection& connection);

}  // namespace corvane
