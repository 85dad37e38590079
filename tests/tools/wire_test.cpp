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
    const std::string stream = first + std::string(7, '\0');
    EXPECT_FALSE(FrameCutter().Feed(stream, [](std::int32_t, std::string_view) {}));
  }
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
