#include "storage/database_cursor.h"

#include <algorithm>

#include "framework/text.h"
#include "storage/database_connection.h"

namespace corvane {

DatabaseCursor::DatabaseCursor(DatabaseConnection& connection, std::vector<std::string> columns)
    : myConnection(&connection), myColumns(std::move(columns)) {}

void DatabaseCursor::MoveNext() {
  if (!EndOfRows()) ++myPosition;
}

const DatabaseValue& DatabaseCursor::Value(std::string_view column) const {
  static const DatabaseValue null;
  const auto found = std::ranges::find_if(
      myColumns, [column](const std::string& name) { return SameText(name, column); });
  if (EndOfRows() || found == myColumns.end()) return null;
  return myRows[myPosition].values[static_cast<std::size_t>(found - myColumns.begin())];
}

bool DatabaseCursor::Update(const DatabaseRecord& changes) {
  if (!HasIdentity()) return false;
  std::string assignments;
  std::vector<DatabaseValue> values;
  for (const auto& [column, value] : changes.Columns()) {
    assignments += (assignments.empty() ? "" : ",") + QuotedIdentifier(column) + "=?";
    values.push_back(value);
  }
  values.emplace_back(myRows[myPosition].identity);
  return myConnection->SQLExecute(
      "UPDATE " + QuotedIdentifier(myTable) + " SET " + assignments + " WHERE _rowid_=?", values);
}

bool DatabaseCursor::DeleteRecord() {
  return HasIdentity() &&
         myConnection->SQLExecute("DELETE FROM " + QuotedIdentifier(myTable) + " WHERE _rowid_=?",
                                  {myRows[myPosition].identity});
}

bool DatabaseCursor::HasIdentity() const {
  if (!EndOfRows() && !myTable.empty()) return true;
  return myConnection->ReportFault("there is no row that could be changed");
}

}  // namespace corvane
