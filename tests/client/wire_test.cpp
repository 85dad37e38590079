#include "client/wire.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "client/ban.h"
#include "client/report.h"

namespace corvane::client {
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
  using namespace std::string_literals;
  for (const std::string& length : {"\0\0\0\0"s, "\0\0\0\7"s, "\x7f\0\0\0"s, "\xff\0\0\0"s}) {
    EXPECT_FALSE(
        FrameCutter().Feed(length + std::string(4, '\0'), [](std::int32_t, std::string_view) {}));
  }
}

TEST(Records, AreReadOnlyInTheirExactForms) {
  struct Case {
    const char* payload;
    bool isRelay;
    bool isListed;
    Report report;
  };
  const Case cases[] = {
      {"a|b|1200,-845,2,90,1,0", true, false, {1200, -845, 2, 90, true, false}},
      {"a|b|1200,-845,2,901,0", false, true, {1200, -845, 2, 90, true, false}},
      {"a|b|0,0,0,-120,1", false, true, {0, 0, 0, -12, false, true}},
      {"a|b|2147483647,0,0,-21474836481,1",
       false,
       true,
       {2147483647, 0, 0, -2147483647 - 1, true, true}},
      {"", false, false, {}},
      {"a|b|", false, false, {}},
      {"a|b|1,2,3,4", false, false, {}},
      {"a|b|1,2,3,1,0", false, false, {}},     // a flag and no hit points
      {"a|b|1,2,3,-1,0", false, false, {}},    // a sign and no hit points
      {"a|b|1,2,3,42,0", false, false, {}},    // no such flag
      {"a|b|1,2,3,4,2,0", false, false, {}},   // no such flag
      {"a|b|1,2,3,4,1,0,", false, false, {}},  // a field too many
      {"a|b|1, 2,3,4,1,0", false, false, {}},  // a blank
      {"a|b|4294967296,2,3,4,1,0", false, false, {}},
  };
  for (const Case& each : cases) {
    const auto relay = ParseRelay(each.payload);
    const auto listed = ParseListed(each.payload);
    ASSERT_EQ(relay.has_value(), each.isRelay) << each.payload;
    ASSERT_EQ(listed.has_value(), each.isListed) << each.payload;
    if (!relay && !listed) continue;
    const MemberRecord& record = relay ? *relay : *listed;
    EXPECT_EQ(record.name, "a|b");
    EXPECT_EQ(record.report, each.report) << each.payload;
  }
}

TEST(Bans, AreReadWithBarsInTheReasonAndMalformedOnesAreCounted) {
  using namespace std::string_literals;
  const BanList list = ParseBans(
      "1|192.0.2.7|Ann|spam|3/7/11 9:05 AM\0"
      "22|::1|Ann|a|b||c|today\0half\0x|1|2|3|4\0"s);
  EXPECT_EQ(list.bans, (std::vector<Ban>{{"1", "192.0.2.7", "Ann", "spam", "3/7/11 9:05 AM"},
                                         {"22", "::1", "Ann", "a|b||c", "today"}}));
  EXPECT_EQ(list.leftOut, 2U);

  std::string many;
  for (std::size_t i = 0; i < kMaxBans + 5; ++i)
    many += "1|a|b|c|d\0"s;
  EXPECT_EQ(ParseBans(many).bans.size(), kMaxBans);
  EXPECT_EQ(ParseBans(many).leftOut, 5U);
}

}  // namespace
}  // namespace corvane::client
