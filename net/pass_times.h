#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace corvane {

// A histogram of how long Qt's loop was busy at a stretch, since the start: with a pass over the
// sockets, or with anything else that keeps it from them.
struct PassTimes {
  using Clock = std::chrono::steady_clock;
  using Duration = std::chrono::nanoseconds;

  // The upper bounds of all buckets but the last.
  static constexpr std::array<std::chrono::microseconds, 8> kBounds{
      std::chrono::microseconds{100}, std::chrono::microseconds{500}, std::chrono::milliseconds{1},
      std::chrono::milliseconds{5},   std::chrono::milliseconds{10},  std::chrono::milliseconds{50},
      std::chrono::milliseconds{250}, std::chrono::seconds{1}};

  void Begin() { begin = Clock::now(); }
  // The next stretch begins.
  void End() {
    const Duration time = Clock::now() - begin;
    begin += time;
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
  Clock::time_point begin = Clock::now();
};

}  // namespace corvane
