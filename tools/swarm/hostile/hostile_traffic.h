#pragma once

#include "tools/swarm/hostile/hostile_account.h"
#include "tools/swarm/hostile/hostile_side.h"
#include "tools/swarm/rate_traffic.h"

namespace corvane::swarm {

// Honest members report by a timetable, and for the middle third of the time a hostile side does
// its worst beside them. A report counts for the third in which it was due.
class HostileTraffic : public Traffic {
 public:
  HostileTraffic(RateTraffic honest, const Options& options, const PartInfo& part)
      : myHonest(std::move(honest)), mySide(options, part) {}

  void Start(Clock::time_point now, Clock::time_point until) override;
  void Wake(Clock::time_point now) override;
  Clock::time_point Delivered(Member sender, std::uint32_t sequence,
                              Clock::time_point now) override;
  void Stop() override;
  bool IsDone() const override { return myHonest.IsDone(); }
  // What the server tells of the hostile side's members is no part of the account.
  bool IsDisturbing(std::string_view payload) const override {
    return !payload.starts_with(kStrangerPrefix);
  }
  void AddTo(RunResult& result) override;

 private:
  HostileAccount::Window& WindowOf(Clock::time_point due);

  RateTraffic myHonest;
  HostileSide mySide;
  HostileAccount myAccount;
  Clock::time_point myPlayStart = Clock::time_point::max();
  Clock::time_point myPlayEnd = Clock::time_point::max();
  bool myIsPlaying = false;
};

}  // namespace corvane::swarm
