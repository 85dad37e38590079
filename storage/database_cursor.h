#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "storage/database_record.h"

namespace corvane {

class DatabaseConnection;

// The rows of a select, all read in advance, and a position that starts at the first row. Borrows
// its connection. A cursor from SQLSelectForEdit knows each row's identity and can change or delete
// the current row, even among rows with equal values.
class DatabaseCursor {
 public:
  std::size_t RecordCount() const { return myRows.size(); }
  bool EndOfRows() const { return myPosition >= myRows.size(); }
  void MoveNext();

  // Columns of the current row by name, ignoring letter case. A missing column, and any column past
  // the last row, reads as NULL.
  const DatabaseValue& Value(std::string_view column) const;
  std::string Text(std::string_view column) const { return TextOf(Value(column)); }
  std::int64_t Integer(std::string_view column) const { return IntegerOf(Value(column)); }
  bool Boolean(std::string_view column) const { return BooleanOf(Value(column)); }
  QDateTime Date(std::string_view column) const { return DateOf(Value(column)); }

  // These change or delete the current row. They return whether that worked; they fail without a
  // current row or its identity.
  [[nodiscard]] bool Update(const DatabaseRecord& changes);
  [[nodiscard]] bool DeleteRecord();

 private:
  friend class DatabaseConnection;
  struct Row {
    std::vector<DatabaseValue> values;
    std::int64_t identity = 0;
  };

  DatabaseCursor(DatabaseConnection& connection, std::vector<std::string> columns);
  // Whether the current row can be changed. If not, sets and reports the connection's error.
  bool HasIdentity() const;

  DatabaseConnection* myConnection;
  std::vector<std::string> myColumns;
  std::vector<Row> myRows;
  std::string myTable;  // empty: rows carry no identity
  std::size_t myPosition = 0;
};

}  // namespace corvane
