#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/swarm/latency_histogram.h"

namespace corvane::swarm {

// What a measured run found.
struct RunResult {
  std::string mode;
  std::size_t networks = 0;
  std::size_t users = 0;
  std::chrono::duration<double> elapsed{0};  // from the first report to the last delivery
  std::uint64_t sent = 0;
  std::uint64_t expected = 0;
  std::uint64_t received = 0;
  std::uint64_t missing = 0;
  std::uint64_t unexpected = 0;
  std::uint64_t connectFailures = 0;
  std::uint64_t disconnects = 0;
  LatencyHistogram latency;
  // Of the server's process, while reports were on the road.
  std::optional<std::chrono::nanoseconds> serverCpu;
  std::optional<std::int64_t> serverRssKib;  // at the end
  // With all members logged in and idle, and before the first connected.
  std::optional<std::int64_t> idleRssKib;
  std::optional<std::int64_t> emptyRssKib;

  // Everything came, nothing else, and nobody was cut off.
  bool IsGood() const;
  double DeliveriesPerSecond() const;
  // Processor time of the server in microseconds.
  std::optional<double> ServerCpuPer1000Deliveries() const;

  // One line for a person.
  std::string ToText() const;
  // One line for a program; the keys stay as they are.
  std::string ToJson() const;
};

}  // namespace corvane::swarm
