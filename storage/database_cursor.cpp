#include "storage/database_cursor.h"

#include <algorithm>

#include "framework/text.h"
#include "storage/database_connection.h"
#include "storage/quoted_identifier.h"

namespace corvane {

DatabaseCursor::DatabaseCursor(DatabaseConnection& connection, std::vector<std::string> columns)
    : myConnection(&connection), myColumns(std::move(columns)) {}

void DatabaseCursor::MoveNext() {
  if (!EndOfRows()) ++myPosition;
  myEdit = {};
}

const DatabaseValue& DatabaseCursor::Value(std::string_view column) const {
  static const DatabaseValue null;
  const auto found = std::ranges::find_if(
      myColumns, [column](const std::string& name) { return SameText(name, column); });
  if (EndOfRows() || found == myColumns.end()) return null;
  return myRows[myPosition].values[static_cast<std::size_t>(found - myColumns.begin())];
}

void DatabaseCursor::Edit() {
  myEdit = {};
}

void DatabaseCursor::SetText(std::string column, std::string value) {
  myEdit.SetText(std::move(column), std::move(value));
}

void DatabaseCursor::SetInteger(std::string column, std::int64_t value) {
  myEdit.SetInteger(std::move(column), value);
}

void DatabaseCursor::SetBoolean(std::string column, bool value) {
  myEdit.SetBoolean(std::move(column), value);
}

void DatabaseCursor::SetDate(std::string column, const QDateTime& value) {
  myEdit.SetDate(std::move(column), value);
}

bool DatabaseCursor::Update() {
  if (!HasIdentity()) return false;
  const DatabaseRecord edit = std::exchange(myEdit, {});
  if (edit.Columns().empty()) return true;
  std::string assignments;
  std::vector<DatabaseValue> values;
  for (const auto& [column, value] : edit.Columns()) {
    assignments += (assignments.empty() ? "" : ",") + QuotedIdentifier(column) + "=?";
    values.push_back(value);
  }
  values.emplace_back(myRows[myPosition].identity);
  return myConnection->Run(
      "UPDATE " + QuotedIdentifier(myTable) + " SET " + assignments + " WHERE _rowid_=?", values);
}

bool DatabaseCursor::DeleteRecord() {
  return HasIdentity() &&
         myConnection->Run("DELETE FROM " + QuotedIdentifier(myTable) + " WHERE _rowid_=?",
                           {myRows[myPosition].identity});
}

bool DatabaseCursor::HasIdentity() const {
  if (!EndOfRows() && !myTable.empty()) return true;
  myConnection->Fail("there is no row that could be changed");
  return myConnection->Complain();
}

}  // namespace corvane
