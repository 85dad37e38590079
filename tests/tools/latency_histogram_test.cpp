#include "tools/swarm/latency_histogram.h"

#include <gtest/gtest.h>

namespace corvane::swarm {
namespace {

using std::chrono::nanoseconds;

TEST(LatencyHistogram, PercentilesAreWithinASixtyFourthFromNanosecondsToMinutes) {
  for (const std::int64_t unit : {1L, 1000L, 1000000L, 60000000L}) {
    LatencyHistogram histogram;
    for (std::int64_t i = 1; i <= 1000; ++i)
      histogram.Add(nanoseconds(i * unit));
    for (const auto& [share, exact] : {std::pair{0.5, 500L}, {0.9, 900L}, {0.99, 990L}}) {
      const std::int64_t found = histogram.Percentile(share).count();
      EXPECT_GE(found, exact * unit);
      EXPECT_LE(found, exact * unit + exact * unit / 64);
    }
    EXPECT_EQ(histogram.Percentile(1), histogram.Max());
    EXPECT_EQ(histogram.Max(), nanoseconds(1000 * unit));
    EXPECT_EQ(histogram.Count(), 1000U);
  }
}

TEST(LatencyHistogram, TakesAnyTime) {
  LatencyHistogram histogram;
  EXPECT_EQ(histogram.Percentile(0.99), nanoseconds(0));
  histogram.Add(nanoseconds(-5));
  EXPECT_EQ(histogram.Max(), nanoseconds(0));
  histogram.Add(std::chrono::hours(48));
  EXPECT_EQ(histogram.Max(), std::chrono::hours(48));
}

}  // namespace
}  // namespace corvane::swarm
