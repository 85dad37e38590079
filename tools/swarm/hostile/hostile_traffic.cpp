#include "tools/swarm/hostile/hostile_traffic.h"

#include "tools/swarm/run_result.h"

namespace corvane::swarm {

void HostileTraffic::Start(Clock::time_point now, Clock::time_point until) {
  myPlayStart = now + (until - now) / 3;
  myPlayEnd = until - (until - now) / 3;
  myHonest.Start(now, until);
}

void HostileTraffic::Wake(Clock::time_point now) {
  if (!myIsPlaying && now >= myPlayStart && now < myPlayEnd) {
    myIsPlaying = true;
    mySide.Start();
  } else if (myIsPlaying && now >= myPlayEnd) {
    mySide.Stop();
  }
  const Clock::time_point due = myHonest.NextDue();
  WindowOf(due).lateness.Add(now - due);
  myHonest.Wake(now);
}

Clock::time_point HostileTraffic::Delivered(Member sender, std::uint32_t sequence,
                                            Clock::time_point now) {
  const Clock::time_point due = myHonest.Delivered(sender, sequence, now);
  WindowOf(due).latency.Add(now - due);
  return due;
}

void HostileTraffic::Stop() {
  mySide.Stop();
  myHonest.Stop();
}

void HostileTraffic::AddTo(RunResult& result) {
  myAccount.part = mySide.Info().name;
  myAccount.strangers = mySide.Finish();
  result.hostile = myAccount;
}

HostileAccount::Window& HostileTraffic::WindowOf(Clock::time_point due) {
  if (due < myPlayStart) return myAccount.windows[0];
  return myAccount.windows[due < myPlayEnd ? 1 : 2];
}

}  // namespace corvane::swarm
