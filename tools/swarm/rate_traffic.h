#pragma once

#include <cstdint>
#include <vector>

#include "tools/swarm/traffic.h"

namespace corvane::swarm {

// Every member reports at the same fixed rate, by a timetable that spreads all bursts of reports
// evenly over the time: whether the server keeps up or not, the next burst leaves when it is due.
class RateTraffic : public Traffic {
 public:
  // `clients` holds the members of network 0, then those of network 1, and so on.
  RateTraffic(ClientPool& pool, DeliveryBook& book, std::vector<Client*> clients, std::size_t users,
              double reportsPerSecond, std::size_t burst = 1);

  void Start(Clock::time_point now, Clock::time_point until) override;
  void Wake(Clock::time_point now) override;
  Clock::time_point Delivered(Member sender, std::uint32_t sequence,
                              Clock::time_point now) override;
  void Stop() override { myTotal = myNext; }
  bool IsDone() const override { return myNext == myTotal; }

  // When the burst is due that leaves next.
  Clock::time_point NextDue() const { return DueTime(myNext); }

 private:
  Clock::time_point DueTime(std::uint64_t burst) const;

  ClientPool& myPool;
  DeliveryBook& myBook;
  std::vector<Client*> myClients;
  std::size_t myUsers;
  std::size_t myBurst;
  double myNanosecondsBetween;  // two bursts of whichever members
  Clock::time_point myStart;
  std::uint64_t myNext = 0;  // of all bursts, counted through
  std::uint64_t myTotal = 0;
};

}  // namespace corvane::swarm
