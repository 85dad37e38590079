#include "framework/visible_text.h"

#include <string>

#include <gtest/gtest.h>

#include "framework/status_line.h"

namespace corvane {
namespace {

using namespace std::string_literals;

// Standard output and windows differ only in the plain blanks around a name.
TEST(VisibleText, WritesOutWhatMisleadsAndLeavesWhatPeopleWrite) {
  const struct {
    std::string text;
    const char* shown;
    const char* name = shown;
  } cases[] = {
      {"", ""},
      {"Andr\xE9 <b>&", "André <b>&"},
      {"a\r\n\tb", "a\\r\\n\\tb"},
      {"DOM\\ann\\n\\\\", "DOM\\ann\\n\\\\"},
      {"\x1B[2J\x7F\0"s, "\\x1b[2J\\x7f\\x00"},
      {"\xC2\x9B[2J", "\\x9b[2J"},
      {"\xE9\x9B[2J", "é\\x9b[2J"},
      {"\xE2\x80\xA8|\xE2\x80\xA9", "\\u2028|\\u2029"},
      {"gpj.\u202E|\u2066|\u200F|\u061C", "gpj.\\u202e|\\u2066|\\u200f|\\u061c"},
      {"\uFEFFAnn\u200B\u00AD\u2060b", "\\ufeffAnn\\u200b\\xad\\u2060b"},
      {"\u00A0\u3000\u3164\uFE0F", "\\xa0\\u3000\\u3164\\ufe0f"},
      {"\U000E0041😀", "\\U000e0041😀"},
      {" Al  ric ", " Al  ric ", "\\x20Al  ric\\x20"},
      {"  ", "  ", "\\x20\\x20"},
      {"\u2764\uFE0F \u2764\uFE0F\u200D🔥", "\u2764\uFE0F \u2764\uFE0F\u200D🔥"},
      {"🏳\uFE0F\u200D🌈 👨🏽\u200D👩\u200D👧 🧔\u200D♂\uFE0F",
       "🏳\uFE0F\u200D🌈 👨🏽\u200D👩\u200D👧 🧔\u200D♂\uFE0F"},
      {"می\u200Cخواهم «Ça\u00A0va\u00A0?» 山田\u3000太郎 1\uFE0F\u20E3",
       "می\u200Cخواهم «Ça\u00A0va\u00A0?» 山田\u3000太郎 1\uFE0F\u20E3"},
      {"\u200CAnn\u200D\u200Db\u00A0 c\uFE0F", "\\u200cAnn\\u200d\\u200db\\xa0 c\\ufe0f"},
      {"♂\uFE0F\uFE0Fa", "♂\uFE0F\\ufe0fa"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Escaped(row.text), row.shown);
    EXPECT_EQ(VisibleText(row.text).toStdString(), row.name);
  }
}

TEST(VisibleText, IsCutOnACharacter) {
  std::string faces = "a";
  for (int i = 0; i < 20; ++i)
    faces += "😀";
  const struct {
    std::string text;
    const char* shown;
  } cases[] = {
      {std::string(14, 'a'), "aaaaaaaaaaaaaa"},
      {std::string(15, 'a'), "aaaaaaaaaaaaaa…"},
      {faces, "a😀😀😀😀😀😀…"},
      {std::string(2000, '\n'), "\\n\\n\\n\\n\\n\\n\\n…"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(VisibleText(row.text, 14).toStdString(), row.shown);
}

TEST(StatusLine, IsCutBetweenCharactersAndGivesItsLength) {
  const std::string most(4096, 'x');
  const std::string name(300, 'x');
  const std::string cutName = name.substr(0, 256) + "... (300 bytes)";
  const std::string even = most.substr(2);
  const std::string controls(4096, '\1');
  std::string escapes;
  for (int i = 0; i < 1024; ++i)
    escapes += "\\x01";
  const struct {
    StatusParts parts;
    std::string shown;
    std::string logged = shown;
  } cases[] = {
      {{"a", "", "\n", Quoted("\u200Cb")}, "a\\n\\u200cb"},
      {{most}, most},
      {{most, "y"}, most + "... (4097 bytes)"},
      {{even, "\xE2\x82\xAC)", ")"}, even + "... (4099 bytes)"},
      {{controls, "y"}, escapes + "... (4097 bytes)"},
      {{"(", Quoted(name), ")", name}, "(" + name + ")" + name, "(" + cutName + ")" + name},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(StatusLine(row.parts), row.shown);
    EXPECT_EQ(LogLine(row.parts), row.logged);
    EXPECT_EQ(HasLongName(row.parts), row.shown != row.logged);
  }
}

}  // namespace
}  // namespace corvane
