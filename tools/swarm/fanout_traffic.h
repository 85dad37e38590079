#pragma once

#include <cstddef>
#include <vector>

#include "tools/swarm/traffic.h"

namespace corvane::swarm {

// A closed loop in each network for itself: the reporters send a burst each; when every delivery
// of it has come, the next.
class FanoutTraffic : public Traffic {
 public:
  // `clients` holds the members of network 0, then those of network 1, and so on.
  FanoutTraffic(ClientPool& pool, DeliveryBook& book, std::vector<Client*> clients,
                std::size_t users, std::size_t reporters, std::size_t burst);

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

  ClientPool& myPool;
  DeliveryBook& myBook;
  std::vector<Client*> myClients;
  std::size_t myUsers;
  std::size_t myReporters;
  std::size_t myBurst;
  std::vector<Loop> myLoops;
  std::size_t myBursting = 0;  // loops with deliveries outstanding
  Clock::time_point myUntil;
  bool myIsStopped = false;
};

}  // namespace corvane::swarm
