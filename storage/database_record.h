#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <QDateTime>

namespace corvane {

// A column's value: NULL, integer, floating point, or text, which also holds blobs.
using DatabaseValue = std::variant<std::monostate, std::int64_t, double, std::string>;

// Convert a value that SQLite stored with another type.
std::string TextOf(const DatabaseValue& value);      // NULL: empty
std::int64_t IntegerOf(const DatabaseValue& value);  // a text: its leading number; NULL: 0
bool BooleanOf(const DatabaseValue& value);          // non-zero, or "true" in any letter case
QDateTime DateOf(const DatabaseValue& value);        // invalid if it is no date

// A table's or column's name, quoted for an SQL statement. It may hold any characters.
std::string QuotedIdentifier(std::string_view name);

// Columns of a row to insert or change, in the order in which they were set.
class DatabaseRecord {
 public:
  void SetText(std::string column, std::string value);
  void SetInteger(std::string column, std::int64_t value);
  void SetBoolean(std::string column, bool value);  // stored as 1 or 0
  void SetDate(std::string column, const QDateTime& value);

  const std::vector<std::pair<std::string, DatabaseValue>>& Columns() const { return myColumns; }

 private:
  std::vector<std::pair<std::string, DatabaseValue>> myColumns;
};

}  // namespace corvane
