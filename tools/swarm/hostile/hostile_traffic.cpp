#include "tools/swarm/hostile/hostile_traffic.h"

#include "tools/swarm/run_result.h"

namespace corvane::swarm {

HostileTraffic::HostileTraffic(RateTraffic honest, const Options& options, const PartInfo& part)
    : myHonest(std::move(honest)), mySide(options, part.make()) {
  myAccount.part = part.name;
  if (options.serverPid) myServer.emplace(*options.serverPid);
}

void HostileTraffic::Start(Clock::time_point now, Clock::time_point until) {
  myPlayStart = now + (until - now) / 3;
  myPlayEnd = until - (until - now) / 3;
  StartWindow(0);
  myHonest.Start(now, until);
}

void HostileTraffic::Wake(Clock::time_point now) {
  if (myWindow == 0 && now >= myPlayStart) {
    EndWindow();
    StartWindow(1);
    mySide.Start();
  } else if (myWindow == 1 && now >= myPlayEnd) {
    EndWindow();
    StartWindow(2);
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
  EndWindow();
  myAccount.strangers = mySide.Finish();
  result.hostile = myAccount;
}

void HostileTraffic::StartWindow(std::size_t index) {
  myWindow = index;
  if (myServer) myWaitBefore = myServer->WaitTime();
}

void HostileTraffic::EndWindow() {
  const auto wait = myServer ? myServer->WaitTime() : std::nullopt;
  if (wait && myWaitBefore) myAccount.windows[myWindow].serverWait = *wait - *myWaitBefore;
}

HostileAccount::Window& HostileTraffic::WindowOf(Clock::time_point due) {
  if (due < myPlayStart) return myAccount.windows[0];
  return myAccount.windows[due < myPlayEnd ? 1 : 2];
}

}  // namespace corvane::swarm
