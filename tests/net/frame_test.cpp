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
  EXPECT_EQ(ReadFrame("\0\0\0\x9"s, 9).state, Frame::State::Incomplete);
  EXPECT_EQ(ReadFrame("\0\0\0\x9"s, 8).state, Frame::State::Malformed) << "by its header alone";
}

}  // namespace
}  // namespace corvane
