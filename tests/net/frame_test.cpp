#include "net/frame.h"

#include <string>

#include <gtest/gtest.h>

namespace corvane {
namespace {

using namespace std::string_literals;

TEST(Frame, LengthDecidesWhatTheBytesAre) {
  const struct {
    std::string bytes;
    Frame::State state;
  } cases[] = {
      {""s, Frame::State::Incomplete},
      {"\0\0\0"s, Frame::State::Incomplete},  // three bytes of 0 may still become a length
      {"\0\0\0\0"s, Frame::State::Malformed},
      {"\0\0\0\1"s, Frame::State::Malformed},
      {"\0\0\0\7xxxxxxxx"s, Frame::State::Malformed},
      {"\0\0\0\x8"s, Frame::State::Incomplete},
      {"\0\0\0\x8\0\0\0\1"s, Frame::State::Whole},
      {"\xFF\xFF\xFF\xFF"s, Frame::State::Malformed},
      {"\x80\0\0\0"s, Frame::State::Malformed},
      {"\x7F\xFF\xFF\xFF\0\0\0\1"s, Frame::State::Incomplete},
  };
  for (const auto& [bytes, state] : cases) {
    EXPECT_EQ(ReadFrame(bytes).state, state) << testing::PrintToString(bytes);
  }
}

TEST(Frame, IsBigEndianWithTheHeaderCounted) {
  EXPECT_EQ(CreateFrame(0x01020304, "\xC3\xA9"), "\0\0\0\x0A\1\2\3\4\xC3\xA9"s);
  const std::string bytes = "\0\0\0\x0B\xFF\xFF\xFF\xFE|\0|next"s;
  const Frame frame = ReadFrame(bytes);
  EXPECT_EQ(frame.command, -2);
  EXPECT_EQ(frame.payload, "|\0|"s);
  EXPECT_EQ(frame.length, 11U);
}

}  // namespace
}  // namespace corvane
