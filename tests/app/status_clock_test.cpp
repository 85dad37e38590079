#include "app/status_clock.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(StatusPrefix, PadsMinutesAndSecondsOnly) {
  EXPECT_EQ(StatusPrefix({{2011, 3, 7}, {9, 5, 2}}), "[3/7/2011 9:05:02] ");
  EXPECT_EQ(StatusPrefix({{2026, 12, 31}, {23, 59, 59}}), "[12/31/2026 23:59:59] ");
}

TEST(StatusClock, PrefixFollowsTheSecond) {
  constexpr qint64 kStart = 1'300'000'000'000;
  StatusClock clock;
  for (const qint64 passed : {0, 999, 1000, 61'000, -1}) {
    const StatusClock::Time time{std::chrono::milliseconds(kStart + passed)};
    EXPECT_EQ(clock.Prefix(time), StatusPrefix(QDateTime::fromMSecsSinceEpoch(kStart + passed)));
  }
}

}  // namespace
}  // namespace corvane
