#pragma once

#include "tools/swarm/hostile/attackers.h"
#include "tools/swarm/rate_load.h"
#include "tools/swarm/server_probe.h"

namespace corvane::swarm {

// Honest members report by a timetable, and strangers attack the server in the middle third of the
// time. A report counts for the third in which it was due.
class AttackedLoad : public Load {
 public:
  AttackedLoad(RateLoad honest, const Options& options);

  void Start(Clock::time_point now, Clock::time_point until) override;
  void Wake(Clock::time_point now) override;
  Clock::time_point Delivered(Member sender, std::uint32_t sequence,
                              Clock::time_point now) override;
  void Stop() override;
  bool IsDone() const override { return myHonest.IsDone(); }
  // Messages about strangers do not count. They begin with a stranger's name, or are empty for a
  // stranger that left during its login.
  bool IsDisturbing(std::string_view payload) const override {
    return !payload.empty() && !payload.starts_with(kStrangerPrefix);
  }
  void AddTo(RunResult& result) override;

 private:
  AttackResult::Window& WindowOf(Clock::time_point due);
  void StartWindow(std::size_t index);
  void EndWindow();

  RateLoad myHonest;
  Attackers myAttackers;
  std::optional<ServerProbe> myServer;
  std::optional<std::chrono::nanoseconds> myWaitBefore;  // WaitTime when the window began
  AttackResult myResult;
  std::size_t myWindow = 0;
  Clock::time_point myAttackStart = Clock::time_point::max();
  Clock::time_point myAttackEnd = Clock::time_point::max();
};

}  // namespace corvane::swarm
