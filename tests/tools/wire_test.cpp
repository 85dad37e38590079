#include "tools/swarm/wire.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tools/swarm/position_report.h"

namespace corvane::swarm {
namespace {

using Frames = std::vector<std::pair<std::int32_t, std::string>>;

TEST(FrameCutter, CutsTheSameMessagesFromPiecesOfAnySize) {
  const Frames sent{{1, "Network"}, {-2, ""}, {5, std::string(3000, 'x')}, {998, "a|b"}};
  std::string stream;
  for (const auto& [command, payload] : sent)
    AppendFrame(stream, command, payload);

  for (std::size_t piece = 1; piece <= stream.size(); ++piece) {
    FrameCutter cutter;
    Frames cut;
    for (std::size_t from = 0; from < stream.size(); from += piece) {
      ASSERT_TRUE(cutter.Feed(std::string_view(stream).substr(from, piece),
                              [&](std::int32_t command, std::string_view payload) {
                                cut.emplace_back(command, payload);
                              }));
    }
    ASSERT_EQ(cut, sent) << "in pieces of " << piece;
  }
}

TEST(FrameCutter, GivesUpOnAnImpossibleLength) {
  for (const char first : {'\0', '\x7f', '\xff'}) {
    std::string stream(8, '\0');
    stream[0] = first;
    for (const std::size_t piece : {std::size_t{8}, std::size_t{3}}) {
      FrameCutter cutter;
      bool inStep = true;
      for (std::size_t from = 0; inStep && from < stream.size(); from += piece) {
        inStep = cutter.Feed(std::string_view(stream).substr(from, piece),
                             [](std::int32_t, std::string_view) { FAIL() << "no message here"; });
      }
      EXPECT_FALSE(inStep) << static_cast<int>(first) << " in pieces of " << piece;
    }
  }
}

TEST(FrameCutter, ResetForgetsAnUnfinishedMessage) {
  FrameCutter cutter;
  Frames cut;
  const auto keep = [&](std::int32_t command, std::string_view payload) {
    cut.emplace_back(command, payload);
  };
  std::string message;
  AppendFrame(message, 2, "OK");
  cutter.Feed(std::string_view(message).substr(0, 9), keep);
  cutter.Reset();
  cutter.Feed(message, keep);
  EXPECT_EQ(cut, (Frames{{2, "OK"}}));
}

TEST(PositionReport, IsSentAsSixFields) {
  std::string message;
  AppendReport(message, {-2147483647, 845, 2, -90, true, false});
  std::string expected;
  AppendFrame(expected, command::kReport, "-2147483647,845,2,-90,1,0");
  EXPECT_EQ(message, expected);
}

TEST(PositionReport, RelayIsReadOnlyInItsExactForm) {
  const auto relay = ParseRelay("a|b|1200,-845,2,90,1,0");
  ASSERT_TRUE(relay);
  EXPECT_EQ(relay->user, "a|b");
  EXPECT_EQ(relay->report, (PositionReport{1200, -845, 2, 90, true, false}));

  for (const char* const other : {"", "a", "a|", "a|1,2,3,4,5", "a|1,2,3,4,1,0,", "a|1,2,3,4,1,0 ",
                                  "a|1,2,3,4,2,0", "a|1,2,3,41,0", "a|1, 2,3,4,1,0"}) {
    EXPECT_FALSE(ParseRelay(other)) << other;
  }
}

}  // namespace
}  // namespace corvane::swarm
