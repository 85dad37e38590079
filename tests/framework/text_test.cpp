#include "framework/text.h"

#include <vector>

#include <gtest/gtest.h>

namespace corvane {
namespace {

using namespace std::string_literals;

TEST(Text, TwoTextsAreTheSameWhenTheirFoldedFormsAre) {
  struct Case {
    std::string left, right;
    bool same;
  };
  const std::vector<Case> cases = {
      {"", "", true},
      {"", "a", false},
      {"Home Net", "hOME nET", true},
      {"Home", "Homes", false},
      {"@[`{", "`{@[", false},                    // neighbours of the letters are no letters
      {"\xC3\x9C", "\xC3\xBC", true},             // UTF-8
      {"\xDC", "\xFC", true},                     // Latin-1
      {"\xDC", "\xC3\xBC", true},                 // one of each
      {"\xDC", "u", false},                       //
      {"\xD0\x96", "\xD0\xB6", true},             // beyond Latin-1
      {"K", "\xE2\x84\xAA", true},                // Kelvin sign
      {"a\xE2\x84\xAA", "b\xE2\x84\xAA", false},  //
      {"Net\xC3\xA9", "Net", false},              //
      {"a\0B"s, "A\0b"s, true},                   //
      {"a\0b"s, "a\0c"s, false},                  //
      {"a\0"s, "a", false},                       //
      {"\xEF\xBB\xBF"
       "a",
       "a", false},                             // a leading U+FEFF counts
      {"a\xC3", "A\xE3", true},                 // broken UTF-8 is Latin-1
      {"\xC3\xBC\xFF", "\xC3\x9C\xFF", false},  // as a whole: the 9C is a control character
      {"\xED\xA0\x80", "\xED\xA0\x80", true},   //
      {"\xED\xA0\x80", "\xED\xA0\x81", false},  // not both U+FFFD
  };
  for (const Case& c : cases) {
    EXPECT_EQ(SameText(c.left, c.right), c.same) << c.left << " and " << c.right;
    EXPECT_EQ(SameText(c.right, c.left), c.same) << c.right << " and " << c.left;
    EXPECT_EQ(FoldText(c.left) == FoldText(c.right), c.same) << c.left << " and " << c.right;
  }
}

TEST(Text, WindowsShowUTF8AndTakeOtherBytesAsLatin1) {
  EXPECT_EQ(DisplayText("na\xC3\xAFve"), QStringLiteral("na\u00EFve"));
  EXPECT_EQ(DisplayText("na\xEFve"), QStringLiteral("na\u00EFve"));
  EXPECT_EQ(DisplayText("a\0b"s).size(), 3);
  EXPECT_EQ(TextFromDisplay(DisplayText("\xF0\x9F\x97\xBA\0 map"s)), "\xF0\x9F\x97\xBA\0 map"s);
}

TEST(Text, FieldsAreCountedFromOneAndMissingOnesAreEmpty) {
  struct Case {
    std::string text;
    std::size_t number;
    std::string field;
  };
  const std::vector<Case> cases = {{"a,b,c", 0, ""}, {"a,b,c", 1, "a"}, {"a,b,c", 3, "c"},
                                   {"a,b,c", 4, ""}, {",b,", 1, ""},    {",b,", 2, "b"},
                                   {",b,", 3, ""},   {"", 1, ""},       {"abc", 1, "abc"}};
  for (const Case& c : cases) {
    EXPECT_EQ(NthField(c.text, ',', c.number), c.field) << c.text << " field " << c.number;
  }
  EXPECT_EQ(CountFields("", ','), 0U);
  EXPECT_EQ(CountFields("abc", ','), 1U);
  EXPECT_EQ(CountFields(",b,", ','), 3U);
}

TEST(Text, TrimmingTakesBlanksAtBothEndsOnly) {
  EXPECT_EQ(Trimmed(" \t\r\n a b \n"), "a b");
  EXPECT_EQ(Trimmed(" \t "), "");
  EXPECT_EQ(Trimmed(""), "");
  EXPECT_EQ(Trimmed("\0 "s), "\0"s);
}

}  // namespace
}  // namespace corvane
