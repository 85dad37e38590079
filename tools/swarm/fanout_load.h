#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "tools/swarm/load.h"

namespace corvane::swarm {

// A closed loop in each network: all reporters send a burst. The next burst follows once every
// member has received every report of the last.
class FanoutLoad : public Load {
 public:
  FanoutLoad(Senders senders, std::size_t reporters, std::size_t burst)
      : mySenders(std::move(senders)),
        myReporters(reporters),
        myBurst(burst),
        myLoops(mySenders.clients.size() / mySenders.users) {}

  void Start(Clock::time_point now, Clock::time_point until) override;
  void Wake(Clock::time_point now) override;
  Clock::time_point Delivered(Member sender, std::uint32_t sequence,
                              Clock::time_point now) override;
  void Stop() override { myIsStopped = true; }
  bool IsDone() const override { return myIsStopped || myBursting == 0; }

 private:
  struct Loop {
    Clock::time_point burstStart;
    std::size_t outstanding = 0;
  };

  void StartBurst(std::size_t network, Clock::time_point now);

  Senders mySenders;
  std::size_t myReporters;
  std::size_t myBurst;
  std::vector<Loop> myLoops;
  std::size_t myBursting = 0;  // loops with deliveries outstanding
  Clock::time_point myUntil;
  bool myIsStopped = false;
};

}  // namespace corvane::swarm
