#pragma once

#include "tools/swarm/traffic.h"

namespace corvane::swarm {

// Nobody sends anything, and nothing may come. A line on standard output tells a script that waits
// for it that all are in.
class IdleTraffic : public Traffic {
 public:
  explicit IdleTraffic(ClientPool& pool) : myPool(pool) {}

  void Start(Clock::time_point now, Clock::time_point until) override;
  void Wake(Clock::time_point now) override;
  Clock::time_point Delivered(Member, std::uint32_t, Clock::time_point now) override { return now; }
  void Stop() override { myIsStopped = true; }
  bool IsDone() const override { return myIsStopped; }

 private:
  ClientPool& myPool;
  Clock::time_point myUntil;
  bool myIsStopped = false;
};

}  // namespace corvane::swarm
