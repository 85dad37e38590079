#include "framework/numbers.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace corvane {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

TEST(Numbers, TheLongestDecimalPrefixIsTheNumber) {
  const std::string zeros(400, '0');
  const std::string nines(400, '9');
  const struct {
    std::string text;
    double number;
    std::int32_t whole;
    bool numeric;
  } cases[] = {
      {"", 0, 0, false},
      {"+12", 12, 12, true},
      {"+-12", 0, 0, false},
      {" \t-12 \r\n", -12, -12, true},
      {"-2.9", -2.9, -2, true},
      {"+.5", 0.5, 0, true},
      {".", 0, 0, false},
      {"1E+2", 100, 100, true},
      {"150e-1x", 15, 15, false},
      {"1.e+", 1, 1, false},
      {"0x10", 0, 0, false},
      {"inf", 0, 0, false},
      {"nan", 0, 0, false},
      {"2147483648", 2147483648, kMax, true},
      {"-2147483649", -2147483649.0, kMin, true},
      {"1e99999999999999999999", kInfinity, kMax, true},
      {"1e-99999999999999999999", 0, 0, true},
      {"-" + nines + ".5e-10", -kInfinity, kMin, true},
      {"0." + zeros + "1e400", 0.1, 0, true},
      {std::string("1\0002", 3), 1, 1, false},
  };
  for (const auto& row : cases) {
    EXPECT_DOUBLE_EQ(NumberFromText(row.text), row.number) << row.text;
    EXPECT_EQ(Int32FromText(row.text), row.whole) << row.text;
    EXPECT_EQ(IsNumeric(row.text), row.numeric) << row.text;
  }
}

}  // namespace
}  // namespace corvane
