#include "framework/text.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

using namespace std::string_literals;

TEST(Text, TwoTextsAreTheSameWhenTheirFoldedFormsAre) {
  const struct {
    std::string left, right;
    bool same;
  } cases[] = {
      {"", "a", false},
      {"Home Net", "hOME nET", true},
      {"@[`{", "`{@[", false},                  // neighbours of the letters are no letters
      {"\xC3\x9C", "\xC3\xBC", true},           // UTF-8
      {"\xDC", "\xC3\xBC", true},               // Latin-1 and UTF-8
      {"\xD0\x96", "\xD0\xB6", true},           // beyond Latin-1
      {"K", "\xE2\x84\xAA", true},              // Kelvin sign
      {"a\0B"s, "A\0b"s, true},                 //
      {"a\0b"s, "a\0c"s, false},                //
      {"\xEF\xBB\xBF", "", false},              // a leading U+FEFF counts
      {"a\xC3", "A\xE3", true},                 // broken UTF-8 is Latin-1
      {"\xC3\xBC\xFF", "\xC3\x9C\xFF", false},  // as a whole: the 9C is a control character
      {"\xED\xA0\x80", "\xED\xA0\x81", false},  // not both U+FFFD
  };
  for (const auto& row : cases) {
    EXPECT_EQ(SameText(row.left, row.right), row.same) << row.left << " and " << row.right;
    EXPECT_EQ(SameText(row.right, row.left), row.same) << row.right << " and " << row.left;
    EXPECT_EQ(FoldText(row.left) == FoldText(row.right), row.same) << row.left << row.right;
  }
}

// This bound excludes names without folding them.
TEST(Text, FoldingChangesALengthByItsFactorAtMost) {
  for (char32_t code = 0; code < 0x20000; ++code) {
    const std::string text = QString::fromUcs4(&code, 1).toStdString();
    ASSERT_TRUE(MayFoldTo(text.size(), FoldText(text).size())) << static_cast<unsigned>(code);
  }
  for (int byte = 0x80; byte < 0x100; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    ASSERT_TRUE(MayFoldTo(text.size(), FoldText(text).size())) << byte;
  }
  EXPECT_FALSE(MayFoldTo(7, 2));
  EXPECT_FALSE(MayFoldTo(2, 7));
}

}  // namespace
}  // namespace corvane
