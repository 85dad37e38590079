#include "framework/numbers.h"

#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace corvane {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

TEST(Numbers, TheLongestDecimalPrefixIsTheNumber) {
  struct Case {
    std::string text;
    double number;
    std::int32_t whole;
    bool numeric;
  };
  const std::string zeros(400, '0');
  const std::string nines(400, '9');
  const std::vector<Case> cases = {
      {"", 0, 0, false},
      {" ", 0, 0, false},
      {"12", 12, 12, true},
      {"-12", -12, -12, true},
      {"+12", 12, 12, true},
      {"+-12", 0, 0, false},
      {"- 12", 0, 0, false},
      {"-", 0, 0, false},
      {" \t12 \r\n", 12, 12, true},
      {"1 2", 1, 1, false},
      {"12abc", 12, 12, false},
      {"abc12", 0, 0, false},
      {"007", 7, 7, true},
      {"2.9", 2.9, 2, true},
      {"-2.9", -2.9, -2, true},
      {".5", 0.5, 0, true},
      {"5.", 5, 5, true},
      {".", 0, 0, false},
      {"1.2.3", 1.2, 1, false},
      {"1,5", 1, 1, false},
      {"1e2", 100, 100, true},
      {"1E+2", 100, 100, true},
      {"1.5e1x", 15, 15, false},
      {"150e-1", 15, 15, true},
      {"1e", 1, 1, false},
      {"1e+", 1, 1, false},
      {"0x10", 0, 0, false},
      {"inf", 0, 0, false},
      {"nan", 0, 0, false},
      {"999999999", 999999999, 999999999, true},
      {"2147483647", 2147483647, kMax, true},
      {"2147483648", 2147483648, kMax, true},
      {"-2147483648", -2147483648.0, kMin, true},
      {"-2147483649", -2147483649.0, kMin, true},
      {"00000000001234567890", 1234567890, 1234567890, true},
      {"1e999", kInfinity, kMax, true},
      {"-1e999", -kInfinity, kMin, true},
      {"1e99999999999999999999", kInfinity, kMax, true},
      {"1e-99999999999999999999", 0, 0, true},
      {"0e99999999999999999999", 0, 0, true},
      {nines, kInfinity, kMax, true},
      {"-" + nines + ".5e-10", -kInfinity, kMin, true},
      {"0." + zeros + "1e20", 0, 0, true},
      {"0." + zeros + "1e400", 0.1, 0, true},
      {std::string("1\0002", 3), 1, 1, false},
  };
  for (const Case& c : cases) {
    EXPECT_DOUBLE_EQ(NumberFromText(c.text), c.number) << c.text;
    EXPECT_EQ(Int32FromText(c.text), c.whole) << c.text;
    EXPECT_EQ(IsNumeric(c.text), c.numeric) << c.text;
  }
}

TEST(Numbers, TextOfANumberIsShortAndReadsBack) {
  EXPECT_EQ(TextFromNumber(5), "5");
  EXPECT_EQ(TextFromNumber(-0.25), "-0.25");
  EXPECT_EQ(TextFromNumber(100000), "100000");
  EXPECT_EQ(TextFromNumber(1234567890123456), "1234567890123456");
  for (const double number :
       {0.0, 0.1, 1e-4, 1.5e-300, 9007199254740993.0, 1e17, 1.7e308, kInfinity, -kInfinity}) {
    EXPECT_EQ(NumberFromText(TextFromNumber(number)), number) << TextFromNumber(number);
  }
}

}  // namespace
}  // namespace corvane
