#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "storage/database_connection.h"
#include "storage/statement_values.h"

namespace corvane {

// The statements on the table "networks", with the name as the key. Changes return whether they
// worked; changing or deleting a name that no row has counts as success. Borrows the connection.
class NetworksTable {
 public:
  explicit NetworksTable(DatabaseConnection& connection,
                         StatementValues values = StatementValues::Pasted)
      : myConnection(connection), myValues(values) {}

  // All rows; columns "name", "pass", "users", "enabled". None if the query fails.
  std::optional<DatabaseCursor> All();

  [[nodiscard]] bool Add(const std::string& name, const std::string& password,
                         std::int32_t maxUsers, bool enabled);
  // The row that Add adds, for BanImport.
  static std::pair<std::string, DatabaseRecord> Row(const std::string& name,
                                                    const std::string& password,
                                                    std::int32_t maxUsers, bool enabled);

  // Changes the first row of that name.
  [[nodiscard]] bool Change(const std::string& name, const std::string& password,
                            std::int32_t maxUsers, bool enabled);

  // Deletes the first row of that name.
  [[nodiscard]] bool Delete(const std::string& name);

 private:
  std::optional<DatabaseCursor> SelectByName(const std::string& name);

  DatabaseConnection& myConnection;
  StatementValues myValues;
};

}  // namespace corvane
