#pragma once

#include <cstdint>
#include <utility>

#include "tools/swarm/load.h"

namespace corvane::swarm {

// Every member reports at the same fixed rate. A timetable spreads the bursts of all members evenly
// over the time. Each burst leaves when it is due, even if the server does not keep up.
class RateLoad : public Load {
 public:
  // `reportsPerSecond` of each member.
  RateLoad(Senders senders, double reportsPerSecond, std::size_t burst = 1)
      : mySenders(std::move(senders)),
        myBurst(burst),
        myNanosecondsBetween(1e9 * static_cast<double>(burst) /
                             (reportsPerSecond * static_cast<double>(mySenders.clients.size()))) {}

  void Start(Clock::time_point now, Clock::time_point until) override;
  void Wake(Clock::time_point now) override;
  Clock::time_point Delivered(Member sender, std::uint32_t sequence,
                              Clock::time_point now) override;
  void Stop() override { myTotal = myNext; }
  bool IsDone() const override { return myNext == myTotal; }

  // When the next burst is due.
  Clock::time_point NextDue() const { return DueTime(myNext); }

 private:
  Clock::time_point DueTime(std::uint64_t burst) const;

  Senders mySenders;
  std::size_t myBurst;
  double myNanosecondsBetween;  // two bursts of any members
  Clock::time_point myStart;
  std::uint64_t myNext = 0;  // burst, counted over all members
  std::uint64_t myTotal = 0;
};

}  // namespace corvane::swarm
