#include "storage/schema_check.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "storage/database_connection.h"

namespace corvane {
namespace {

struct Table {
  const char* name;
  std::vector<std::string_view> columns;
};

}  // namespace

std::string MissingFromSchema(DatabaseConnection& connection) {
  const std::array<Table, 3> tables = {{
      {"networks", {"name", "pass", "users", "enabled"}},
      {"bans", {"id", "address", "by", "reason", "bandate", "banlength", "network"}},
      {"admins", {"id", "name", "address", "network"}},
  }};
  std::string missing;
  const auto add = [&missing](const std::string& what) {
    missing += (missing.empty() ? "" : ", ") + what;
  };
  for (const Table& table : tables) {
    const std::string name = table.name;
    auto rows =
        connection.SQLSelect("SELECT lower(name) AS name FROM pragma_table_info(?)", {name});
    if (!rows) return {};
    if (rows->EndOfRows()) {
      add("the table " + name);
      continue;
    }
    std::vector<std::string> there;
    for (; !rows->EndOfRows(); rows->MoveNext())
      there.push_back(rows->Text("name"));
    for (const std::string_view column : table.columns) {
      if (std::ranges::find(there, column) == there.end()) {
        add("the column " + name + '.' + std::string(column));
      }
    }
  }
  return missing;
}

}  // namespace corvane
