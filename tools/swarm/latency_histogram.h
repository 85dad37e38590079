#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace corvane::swarm {

// A histogram of times from nanoseconds to an hour with a resolution of 1/64 of the value, in 19
// KB.
class LatencyHistogram {
 public:
  void Add(std::chrono::nanoseconds latency);

  std::uint64_t Count() const { return myCount; }
  // The time that `share` (0 to 1) of the values do not exceed; zero if there are none.
  std::chrono::nanoseconds Percentile(double share) const;
  std::chrono::nanoseconds Max() const { return myMax; }

 private:
  static constexpr unsigned kSubBits = 6;
  static constexpr unsigned kMaxBits = 42;

  static std::size_t BucketOf(std::uint64_t value);
  static std::uint64_t UpperBoundOf(std::size_t bucket);

  std::array<std::uint64_t, (kMaxBits - kSubBits + 1) << kSubBits> myBuckets{};
  std::uint64_t myCount = 0;
  std::chrono::nanoseconds myMax{0};
};

}  // namespace corvane::swarm
