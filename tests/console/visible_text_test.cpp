#include "console/visible_text.h"

#include <string>

#include <gtest/gtest.h>

using namespace corvane;

TEST(VisibleText, IsOneLineOfPlainCharactersCutOnACharacter) {
  std::string faces = "a";
  for (int i = 0; i < 20; ++i)
    faces += "😀";
  const struct {
    std::string text;
    const char* shown;
  } cases[] = {
      {"Andr\xE9 <b>&", "André <b>&"},
      {"a\r\n\tb", "a\\r\\n\\tb"},
      {std::string("\0\x1B[\x7F", 4), "\\x00\\x1b[\\x7f"},
      {"next\xC2\x85line", "next\\x85line"},
      {"\xE2\x80\xA8|\xE2\x80\xA9", "\\u2028|\\u2029"},
      {"gpj.\xE2\x80\xAE", "gpj.\\u202e"},
      {std::string(14, 'a'), "aaaaaaaaaaaaaa"},
      {std::string(15, 'a'), "aaaaaaaaaaaaaa…"},
      {faces, "a😀😀😀😀😀😀…"},
      {std::string(2000, '\n'), "\\n\\n\\n\\n\\n\\n\\n…"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(VisibleText(row.text, 14).toStdString(), row.shown);
}
