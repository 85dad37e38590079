#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/swarm/hostile/hostile_account.h"
#include "tools/swarm/latency_histogram.h"

class QJsonObject;
class QString;

namespace corvane::swarm {

// The account of the reports that were sent.
struct Deliveries {
  std::uint64_t sent = 0;
  std::uint64_t expected = 0;
  std::uint64_t received = 0;
  std::uint64_t missing = 0;
  LatencyHistogram latency;
};

// What a measured run found.
struct RunResult {
  std::string mode;
  std::size_t networks = 0;
  std::size_t users = 0;
  // From the first report to the last delivery; where none is sent, as long as all were in or
  // clients came and went.
  std::chrono::duration<double> elapsed{0};
  std::optional<Deliveries> deliveries;   // fanout, rate and hostile
  std::optional<std::uint64_t> visits;    // churn: log-ins, each with its leave
  std::optional<HostileAccount> hostile;  // hostile
  std::uint64_t unexpected = 0;           // deliveries that should not have come
  std::uint64_t connectFailures = 0;
  std::uint64_t disconnects = 0;
  // Of the server's process, in that time.
  std::optional<std::chrono::nanoseconds> serverCpu;
  std::optional<std::int64_t> serverRssKib;  // at the end
  std::optional<std::int64_t> serverPeakKib;
  // With all members logged in and idle, and before the first connected.
  std::optional<std::int64_t> idleRssKib;
  std::optional<std::int64_t> emptyRssKib;

  // What was to be done was done, everything came, nothing else, and nobody was cut off (of the
  // honest; the hostile side has to have got as far as to act).
  bool IsGood() const;

  // One line for a person.
  std::string ToText() const;
  // One line for a program; the keys stay as they are.
  std::string ToJson() const;

 private:
  QString HostileText() const;
  void AddDeliveries(QJsonObject& json) const;
  void AddHostile(QJsonObject& json) const;
  double PerSecond(std::uint64_t count) const;
  // Of one core; where there is a time of the server.
  double ServerCpuShare() const;
  std::optional<double> ServerBytesPerConnection() const;
};

}  // namespace corvane::swarm
