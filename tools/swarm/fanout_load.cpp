#include "tools/swarm/fanout_load.h"

namespace corvane::swarm {

void FanoutLoad::Start(Clock::time_point now, Clock::time_point until) {
  myUntil = until;
  for (std::size_t network = 0; network < myLoops.size(); ++network)
    StartBurst(network, now);
  mySenders.pool.WakeAt(until);
}

// Deliveries drive the loop; the time ends it, even if a delivery never comes.
void FanoutLoad::Wake(Clock::time_point now) {
  if (now >= myUntil) Stop();
}

Clock::time_point FanoutLoad::Delivered(Member sender, std::uint32_t, Clock::time_point now) {
  Loop& loop = myLoops[sender.network];
  const Clock::time_point sent = loop.burstStart;
  if (--loop.outstanding == 0) {
    --myBursting;
    if (!myIsStopped && now < myUntil) StartBurst(sender.network, now);
  }
  return sent;
}

void FanoutLoad::StartBurst(std::size_t network, Clock::time_point now) {
  Loop& loop = myLoops[network];
  loop.burstStart = now;
  loop.outstanding = myReporters * myBurst * (mySenders.users - 1);
  ++myBursting;
  for (std::size_t user = 0; user < myReporters; ++user)
    mySenders.Send(network * mySenders.users + user, myBurst);
}

}  // namespace corvane::swarm
