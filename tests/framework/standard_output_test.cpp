#include "framework/standard_output.h"

#include <gtest/gtest.h>

using namespace corvane;
using namespace std::string_literals;

TEST(StandardOutput, ControlCharactersAreEscaped) {
  EXPECT_EQ(Escaped("two\nlines\r\tand \xC3\xA9"), "two\\nlines\\x0D\\tand \xC3\xA9");
  EXPECT_EQ(Escaped("\x1B[2J\x7F\0"s), "\\x1B[2J\\x7F\\x00");
  EXPECT_EQ(Escaped("\xC2\x9B[2J"), "\\x9B[2J");
  EXPECT_EQ(Escaped("\x9B[2J \xE9"), "\\x9B[2J \xC3\xA9");
}
