#include "tools/swarm/hostile/attacked_load.h"

#include "tools/swarm/run_result.h"

namespace corvane::swarm {

AttackedLoad::AttackedLoad(RateLoad honest, const Options& options)
    : myHonest(std::move(honest)), myAttackers(options, options.attack->make()) {
  myResult.attack = options.attack->name;
  if (options.serverPid) myServer.emplace(*options.serverPid);
}

void AttackedLoad::Start(Clock::time_point now, Clock::time_point until) {
  myAttackStart = now + (until - now) / 3;
  myAttackEnd = until - (until - now) / 3;
  StartWindow(0);
  myHonest.Start(now, until);
}

void AttackedLoad::Wake(Clock::time_point now) {
  if (myWindow == 0 && now >= myAttackStart) {
    EndWindow();
    StartWindow(1);
    myAttackers.Start();
  } else if (myWindow == 1 && now >= myAttackEnd) {
    EndWindow();
    StartWindow(2);
    myAttackers.Stop();
  }
  const Clock::time_point due = myHonest.NextDue();
  WindowOf(due).lateness.Add(now - due);
  myHonest.Wake(now);
}

Clock::time_point AttackedLoad::Delivered(Member sender, std::uint32_t sequence,
                                          Clock::time_point now) {
  const Clock::time_point due = myHonest.Delivered(sender, sequence, now);
  WindowOf(due).latency.Add(now - due);
  return due;
}

void AttackedLoad::Stop() {
  myAttackers.Stop();
  myHonest.Stop();
}

void AttackedLoad::AddTo(RunResult& result) {
  EndWindow();
  myResult.strangers = myAttackers.Finish();
  result.hostile = myResult;
}

void AttackedLoad::StartWindow(std::size_t index) {
  myWindow = index;
  if (myServer) myWaitBefore = myServer->WaitTime();
}

void AttackedLoad::EndWindow() {
  const auto wait = myServer ? myServer->WaitTime() : std::nullopt;
  if (wait && myWaitBefore) myResult.windows[myWindow].serverWait = *wait - *myWaitBefore;
}

AttackResult::Window& AttackedLoad::WindowOf(Clock::time_point due) {
  if (due < myAttackStart) return myResult.windows[0];
  return myResult.windows[due < myAttackEnd ? 1 : 2];
}

}  // namespace corvane::swarm
