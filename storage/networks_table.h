#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "storage/database_connection.h"

namespace corvane {

// The statements on the table "networks". The name is the key of every query and is put into the
// text as it stands, unescaped: this is deliberate. What changes the table returns whether it
// worked; a name that no row has changes nothing and counts as such.
class NetworksTable {
 public:
  explicit NetworksTable(DatabaseConnection& connection) : myConnection(connection) {}

  // All rows; columns "name", "pass", "users", "enabled". None when the query fails.
  std::optional<DatabaseCursor> All();

  [[nodiscard]] bool Add(const std::string& name, const std::string& password,
                         std::int32_t maxUsers, bool enabled);

  // Changes the first row of that name.
  [[nodiscard]] bool Change(const std::string& name, const std::string& password,
                            std::int32_t maxUsers, bool enabled);

  // Deletes the first row of that name.
  [[nodiscard]] bool Delete(const std::string& name);

 private:
  DatabaseConnection& myConnection;
};

}  // namespace corvane
