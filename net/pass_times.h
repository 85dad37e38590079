#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace corvane {

// A histogram of how long the loop's passes took, since the start.
struct PassTimes {
  using Duration = std::chrono::nanoseconds;

  // The upper bounds of all buckets but the last.
  static constexpr std::array<std::chrono::microseconds, 8> kBounds{
      std::chrono::microseconds{100}, std::chrono::microseconds{500}, std::chrono::milliseconds{1},
      std::chrono::milliseconds{5},   std::chrono::milliseconds{10},  std::chrono::milliseconds{50},
      std::chrono::milliseconds{250}, std::chrono::seconds{1}};

  void Add(Duration time) {
    std::size_t bucket = 0;
    while (bucket < kBounds.size() && time > kBounds[bucket])
      ++bucket;
    ++counts[bucket];
    sum += time;
    if (time > longest) longest = time;
  }

  std::array<std::uint64_t, kBounds.size() + 1> counts{};
  Duration sum{0};
  Duration longest{0};  // since a reader reset it
};

}  // namespace corvane
