#include "storage/database_record.h"

#include <vector>

#include <gtest/gtest.h>

namespace corvane {
namespace {

using namespace std::string_literals;

TEST(DatabaseValue, ReadsAsAnyType) {
  struct Case {
    DatabaseValue value;
    std::string text;
    std::int64_t integer;
    bool boolean;
  };
  const std::vector<Case> cases = {
      {{}, "", 0, false},
      {std::int64_t{7}, "7", 7, true},
      {std::int64_t{0}, "0", 0, false},
      {INT64_MIN, "-9223372036854775808", INT64_MIN, true},
      {0.5, "0.5", 0, true},
      {5.0, "5.0", 5, true},
      {1e300, "1.0e+300", INT64_MAX, true},
      {-1e300, "-1.0e+300", INT64_MIN, true},
      {" 12 users"s, " 12 users", 12, true},
      {"1e999"s, "1e999", INT64_MAX, true},
      {"TRUE"s, "TRUE", 0, true},
      {"false"s, "false", 0, false},
      {"0"s, "0", 0, false},
      {""s, "", 0, false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TextOf(c.value), c.text);
    EXPECT_EQ(IntegerOf(c.value), c.integer) << c.text;
    EXPECT_EQ(BooleanOf(c.value), c.boolean) << c.text;
    EXPECT_FALSE(DateOf(c.value).isValid()) << c.text;
  }
}

TEST(DatabaseRecord, KeepsTheOrderAndTheLastValueOfAColumn) {
  DatabaseRecord record;
  record.SetText("b", "one");
  record.SetBoolean("a", true);
  record.SetText("B", "two");
  record.SetDate("c", {});
  const std::vector<std::pair<std::string, DatabaseValue>> expected = {
      {"b", "two"s}, {"a", std::int64_t{1}}, {"c", {}}};
  EXPECT_EQ(record.Columns(), expected);
}

}  // namespace
}  // namespace corvane
