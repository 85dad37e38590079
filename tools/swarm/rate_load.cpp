#include "tools/swarm/rate_load.h"

#include <cmath>

namespace corvane::swarm {

void RateLoad::Start(Clock::time_point now, Clock::time_point until) {
  myStart = now;
  const double duration = std::chrono::duration<double, std::nano>(until - now).count();
  myTotal = static_cast<std::uint64_t>(std::llround(duration / myNanosecondsBetween));
  Wake(now);
}

void RateLoad::Wake(Clock::time_point now) {
  for (; myNext < myTotal && DueTime(myNext) <= now; ++myNext)
    mySenders.Send(myNext % mySenders.clients.size(), myBurst);
  if (myNext < myTotal) mySenders.pool.WakeAt(DueTime(myNext));
}

Clock::time_point RateLoad::Delivered(Member sender, std::uint32_t sequence, Clock::time_point) {
  return DueTime((sequence - 1) / myBurst * mySenders.clients.size() +
                 sender.network * mySenders.users + sender.user);
}

Clock::time_point RateLoad::DueTime(std::uint64_t burst) const {
  const double offset = static_cast<double>(burst) * myNanosecondsBetween;
  return myStart + std::chrono::nanoseconds(std::llround(offset));
}

}  // namespace corvane::swarm
