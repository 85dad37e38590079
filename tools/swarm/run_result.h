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

// The account of the reports that were sent.
struct Deliveries {
  std::uint64_t sent = 0;
  std::uint64_t expected = 0;
  std::uint64_t received = 0;
  std::uint64_t missing = 0;
  LatencyHistogram latency;
};

// What became of the strangers of a run.
struct StrangerCounts {
  std::uint64_t greeted = 0;
  std::uint64_t acted = 0;  // of the connections: those that got as far as to act
  std::uint64_t ended = 0;  // connections that the server ended or did not take
  std::uint64_t bytesSent = 0;
  std::string refusal;  // why the last log-in failed; for a person to read
};

// What the honest members noticed before, during and after the attack.
struct AttackResult {
  struct Window {
    LatencyHistogram latency;
    // How late the reports left this program: what the machine and the program itself, which share
    // the processors with the server, have in the latency.
    LatencyHistogram lateness;
    // How long the server waited for a processor, which is in the latency too.
    std::optional<std::chrono::nanoseconds> serverWait;
  };

  static constexpr std::array kWindowNames = {"before", "during", "after"};

  std::string attack;
  std::array<Window, kWindowNames.size()> windows;
  StrangerCounts strangers;
};

// What a measured run found.
struct RunResult {
  explicit RunResult(const Options& options)
      : mode(options.modeName), networks(options.networks.size()), users(options.users) {}

  std::string mode;
  std::size_t networks;
  std::size_t users;
  // From the first report to the last delivery; where none is sent, as long as all were in or
  // clients came and went.
  std::chrono::duration<double> elapsed{0};
  std::optional<Deliveries> deliveries;  // fanout, rate and hostile
  std::optional<std::uint64_t> visits;   // churn: log-ins, each with its leave
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

// What became of the clients of each rush.
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
  // All were greeted and stayed, in every round.
  bool IsGood() const;
  // As those of RunResult.
  std::string ToText() const;
  std::string ToJson() const;
};

}  // namespace corvane::swarm
