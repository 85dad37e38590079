#include "tools/swarm/latency_histogram.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace corvane::swarm {

void LatencyHistogram::Add(std::chrono::nanoseconds latency) {
  latency = std::max(latency, std::chrono::nanoseconds(0));
  ++myBuckets[BucketOf(static_cast<std::uint64_t>(latency.count()))];
  ++myCount;
  myMax = std::max(myMax, latency);
}

std::chrono::nanoseconds LatencyHistogram::Percentile(double share) const {
  const auto wanted = static_cast<std::uint64_t>(std::ceil(share * static_cast<double>(myCount)));
  std::uint64_t seen = 0;
  for (std::size_t bucket = 0; bucket < myBuckets.size(); ++bucket) {
    seen += myBuckets[bucket];
    if (seen > 0 && seen >= wanted) {
      const auto bound = static_cast<std::int64_t>(UpperBoundOf(bucket));
      return std::min(std::chrono::nanoseconds(bound), myMax);
    }
  }
  return std::chrono::nanoseconds(0);
}

// Each value below 64 has its own bucket. Above, the leading 1 bit selects a group, and the six
// bits after it a bucket in the group.
std::size_t LatencyHistogram::BucketOf(std::uint64_t value) {
  value = std::min(value, (std::uint64_t{1} << kMaxBits) - 1);
  const auto bits = static_cast<unsigned>(std::bit_width(value));
  if (bits <= kSubBits) return static_cast<std::size_t>(value);
  const unsigned shift = bits - kSubBits - 1;
  const std::uint64_t sub = value >> shift & ((std::uint64_t{1} << kSubBits) - 1);
  return (static_cast<std::size_t>(shift + 1) << kSubBits) + static_cast<std::size_t>(sub);
}

std::uint64_t LatencyHistogram::UpperBoundOf(std::size_t bucket) {
  const std::size_t group = bucket >> kSubBits;
  const std::uint64_t sub = bucket & ((std::uint64_t{1} << kSubBits) - 1);
  if (group == 0) return sub;
  return (((std::uint64_t{1} << kSubBits) + sub + 1) << (group - 1)) - 1;
}

}  // namespace corvane::swarm
