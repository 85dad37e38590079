#include "tools/swarm/idle_traffic.h"

#include <cstdio>

namespace corvane::swarm {

void IdleTraffic::Start(Clock::time_point, Clock::time_point until) {
  std::puts("ready");
  std::fflush(stdout);
  myUntil = until;
  myPool.WakeAt(until);
}

void IdleTraffic::Wake(Clock::time_point now) {
  if (now >= myUntil) Stop();
}

}  // namespace corvane::swarm
