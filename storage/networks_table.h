#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "storage/database_connection.h"

namespace corvane {

// The statements on the table "networks". The name is the key of every query and is put into the
// text as it stands, unescaped: this is deliberate.
class NetworksTable {
 public:
  explicit NetworksTable(DatabaseConnection& connection) : myConnection(connection) {}

  // All rows; columns "name", "pass", "users", "enabled". None when the query fails.
  std::optional<DatabaseCursor> All();

  void Add(const std::string& name, const std::string& password, std::int32_t maxUsers,
           bool enabled);

  // Changes the first row of that name; the connection's error flag tells whether it worked. A
  // name that no row has changes nothing.
  void Change(const std::string& name, const std::string& password, std::int32_t maxUsers,
              bool enabled);

  // Deletes the first row of that name.
  void Delete(const std::string& name);

 private:
  DatabaseConnection& myConnection;
};

}  // namespace corvane
