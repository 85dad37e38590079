#pragma once

#include <string>

namespace corvane {

class DatabaseConnection;

// Lists the tables and columns that the server needs and the database lacks, in words for the
// operator. Empty if all exist, or if the database cannot be read.
std::string MissingFromSchema(DatabaseConnection& connection);

}  // namespace corvane
