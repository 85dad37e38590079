#include "console/visible_text.h"

#include <string>

#include <gtest/gtest.h>

using namespace corvane;

TEST(VisibleText, IsOneLineOfPlainCharacters) {
  const struct {
    std::string text;
    const char* shown;
  } cases[] = {
      {"", ""},
      {"Jos\xC3\xA9 <b>&amp;", "José <b>&amp;"},
      {"a\r\nb\tc", "a\\r\\nb\\tc"},
      {std::string("x\0y\x1B[31m\x7F", 9), "x\\x00y\\x1b[31m\\x7f"},
      {"next\xC2\x85line", "next\\x85line"},
      {"a\xE2\x80\xA8"
       "b\xE2\x80\xA9",
       "a\\u2028b\\u2029"},
      {"gpj.\xE2\x80\xAE"
       "exe",
       "gpj.\\u202eexe"},
      {"Andr\xE9", "André"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(VisibleText(row.text).toStdString(), row.shown);
}

TEST(VisibleText, CutsALongTextOnACharacter) {
  const auto repeated = [](const std::string& part, int times) {
    std::string result;
    for (int i = 0; i < times; ++i)
      result += part;
    return result;
  };
  const struct {
    std::string text;
    std::string shown;
  } cases[] = {
      {repeated("a", 10), repeated("a", 10)},
      {repeated("a", 11), repeated("a", 10) + "…"},
      {repeated("€", 2000), repeated("€", 10) + "…"},
      {"a" + repeated("\xF0\x9F\x98\x80", 2000), "a" + repeated("\xF0\x9F\x98\x80", 4) + "…"},
      {repeated("\n", 2000), repeated("\\n", 5) + "…"},
      {repeated("\n", 5), repeated("\\n", 5)},
  };
  for (const auto& row : cases)
    EXPECT_EQ(VisibleText(row.text, 10).toStdString(), row.shown);
}
