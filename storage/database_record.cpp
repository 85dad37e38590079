#include "storage/database_record.h"

#include <algorithm>
#include <array>
#include <limits>

#include <sqlite3.h>

#include "framework/dates.h"
#include "framework/numbers.h"
#include "framework/text.h"

namespace corvane {

namespace {

std::int64_t WholeNumber(double number) {
  // 2^63, the first double past the range.
  constexpr double kPastEnd = 9223372036854775808.0;
  if (number >= kPastEnd) return std::numeric_limits<std::int64_t>::max();
  if (number < -kPastEnd) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(number);
}

void Set(std::vector<std::pair<std::string, DatabaseValue>>& columns, std::string name,
         DatabaseValue value) {
  const auto found = std::ranges::find_if(
      columns, [&](const auto& column) { return SameText(column.first, name); });
  if (found == columns.end()) {
    columns.emplace_back(std::move(name), std::move(value));
  } else {
    found->second = std::move(value);
  }
}

}  // namespace

std::string TextOf(const DatabaseValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return std::to_string(*integer);
  if (const auto* real = std::get_if<double>(&value)) {
    std::array<char, 64> buffer{};
    return sqlite3_snprintf(static_cast<int>(buffer.size()), buffer.data(), "%!.15g", *real);
  }
  return {};
}

std::int64_t IntegerOf(const DatabaseValue& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return *integer;
  if (const auto* real = std::get_if<double>(&value)) return WholeNumber(*real);
  if (const auto* text = std::get_if<std::string>(&value)) {
    return WholeNumber(NumberFromText(*text));
  }
  return 0;
}

bool BooleanOf(const DatabaseValue& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return *integer != 0;
  if (const auto* real = std::get_if<double>(&value)) return *real != 0;
  if (const auto* text = std::get_if<std::string>(&value)) {
    return SameText(Trimmed(*text), "true") || NumberFromText(*text) != 0;
  }
  return false;
}

QDateTime DateOf(const DatabaseValue& value) {
  const auto* text = std::get_if<std::string>(&value);
  return text == nullptr ? QDateTime() : DateFromStored(*text);
}

std::string QuotedIdentifier(std::string_view name) {
  std::string quoted = "\"";
  for (const char byte : name)
    quoted.append(byte == '"' ? 2 : 1, byte);
  return quoted + '"';
}

void DatabaseRecord::SetText(std::string column, std::string value) {
  Set(myColumns, std::move(column), std::move(value));
}

void DatabaseRecord::SetInteger(std::string column, std::int64_t value) {
  Set(myColumns, std::move(column), value);
}

void DatabaseRecord::SetBoolean(std::string column, bool value) {
  Set(myColumns, std::move(column), std::int64_t{value ? 1 : 0});
}

void DatabaseRecord::SetDate(std::string column, const QDateTime& value) {
  Set(myColumns, std::move(column),
      value.isValid() ? DatabaseValue(StoredDate(value)) : DatabaseValue());
}

}  // namespace corvane
