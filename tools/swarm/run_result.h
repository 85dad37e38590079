#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/swarm/latency_histogram.h"
#include "tools/swarm/options.h"

class QJsonObject;
class QString;

namespace corvane::swarm {

// The deliveries of a measured run (DeliveryBook).
struct Deliveries {
  std::uint64_t sent = 0;
  std::uint64_t expected = 0;
  std::uint64_t received = 0;
  std::uint64_t missing = 0;
  LatencyHistogram latency;
};

// Connections of the strangers in a run.
struct StrangerCounts {
  std::uint64_t greeted = 0;
  std::uint64_t acted = 0;  // reached their standing
  std::uint64_t ended = 0;  // ended or refused by the server
  std::uint64_t bytesSent = 0;
  std::string refusal;  // of the last failed login, for a person to read
};

// The latency of the honest members' reports before, during and after the attack.
struct AttackResult {
  struct Window {
    LatencyHistogram latency;
    // How late the reports left this program, which shares the processors with the server. Part of
    // the latency.
    LatencyHistogram lateness;
    // How long the server waited for a processor. Part of the latency.
    std::optional<std::chrono::nanoseconds> serverWait;
  };

  static constexpr std::array kWindowNames = {"before", "during", "after"};

  std::string attack;
  std::array<Window, kWindowNames.size()> windows;
  StrangerCounts strangers;
};

// The result of a measured run or of churn.
struct RunResult {
  explicit RunResult(const Options& options)
      : mode(options.modeName), networks(options.networks.size()), users(options.users) {}

  std::string mode;
  std::size_t networks;
  std::size_t users;
  // From the first report to the last delivery; idle: while all were online; churn: the whole run.
  std::chrono::duration<double> elapsed{0};
  std::optional<Deliveries> deliveries;  // fanout, rate and hostile
  std::optional<std::uint64_t> visits;   // churn: logins, each with its leave
  std::optional<AttackResult> hostile;   // hostile
  std::uint64_t unexpected = 0;          // deliveries that should not have come
  std::uint64_t connectFailures = 0;
  std::uint64_t disconnects = 0;
  // Of the server's process, in that time.
  std::optional<std::chrono::nanoseconds> serverCpu;
  std::optional<std::int64_t> serverRssKib;  // at the end
  std::optional<std::int64_t> serverPeakKib;
  // With all members logged in and idle, and before the first connected.
  std::optional<std::int64_t> idleRssKib;
  std::optional<std::int64_t> emptyRssKib;

  // Whether something was measured, all expected deliveries and no others came, no honest client
  // was refused or cut off, and, in an attack, some strangers acted.
  bool IsGood() const;

  // One line for a person.
  std::string ToText() const;
  // One line for programs, with stable keys.
  std::string ToJson() const;

 private:
  QString HostileText() const;
  void AddDeliveries(QJsonObject& json) const;
  void AddHostile(QJsonObject& json) const;
  double PerSecond(std::uint64_t count) const;
  // Of one core. Needs serverCpu.
  double ServerCpuShare() const;
  std::optional<double> ServerBytesPerConnection() const;
};

// The result of a rush (RunRush).
struct RushResult {
  struct Round {
    std::size_t greeted = 0;
    std::size_t refused = 0;  // not taken, or ended before the greeting
    std::size_t cutOff = 0;   // ended after it
    // From the first connect to the last greeting.
    std::chrono::duration<double> untilLastGreeted{0};
  };

  std::size_t clients = 0;
  std::vector<Round> rounds;

  std::size_t Hung(const Round& round) const { return clients - round.greeted - round.refused; }
  // Whether all clients were greeted and stayed in every round.
  bool IsGood() const;
  // Like those of RunResult.
  std::string ToText() const;
  std::string ToJson() const;
};

}  // namespace corvane::swarm
