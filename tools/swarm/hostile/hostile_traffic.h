#pragma once

#include "tools/swarm/hostile/hostile_side.h"
#include "tools/swarm/rate_traffic.h"
#include "tools/swarm/server_probe.h"

namespace corvane::swarm {

// Honest members report by a timetable, and for the middle third of the time a hostile side does
// its worst beside them. A report counts for the third in which it was due.
class HostileTraffic : public Traffic {
 public:
  HostileTraffic(RateTraffic honest, const Options& options, const PartInfo& part);

  void Start(Clock::time_point now, Clock::time_point until) override;
  void Wake(Clock::time_point now) override;
  Clock::time_point Delivered(Member sender, std::uint32_t sequence,
                              Clock::time_point now) override;
  void Stop() override;
  bool IsDone() const override { return myHonest.IsDone(); }
  // What the server tells of the hostile side's members is no part of the account; one who leaves
  // in the middle of a log-in has no name.
  bool IsDisturbing(std::string_view payload) const override {
    return !payload.empty() && !payload.starts_with(kStrangerPrefix);
  }
  void AddTo(RunResult& result) override;

 private:
  HostileAccount::Window& WindowOf(Clock::time_point due);
  void StartWindow(std::size_t index);
  void EndWindow();

  RateTraffic myHonest;
  HostileSide mySide;
  std::optional<ServerProbe> myServer;
  std::optional<std::chrono::nanoseconds> myWaitBefore;  // the server's, when the window began
  HostileAccount myAccount;
  std::size_t myWindow = 0;
  Clock::time_point myPlayStart = Clock::time_point::max();
  Clock::time_point myPlayEnd = Clock::time_point::max();
};

}  // namespace corvane::swarm
