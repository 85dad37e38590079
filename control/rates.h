#pragma once

#include <chrono>
#include <deque>

#include <QTimer>

#include "net/pass_times.h"
#include "net/traffic_counts.h"

namespace corvane {

// Messages and bytes per second over the last ten seconds, for `corvanectl status`: they show how
// busy the server is now, which totals since its start do not. Samples the borrowed counts once a
// second, and resets the longest pass.
class Rates {
 public:
  Rates(const TrafficCounts& counted, PassTimes& passes);

  struct Rate {
    double messages = 0;
    double received = 0;  // bytes
    double sent = 0;
    PassTimes::Duration longestPass{0};
  };
  Rate Now();

 private:
  struct Sample {
    std::chrono::steady_clock::time_point time;
    TrafficCounts counted;
    PassTimes::Duration longestPass;  // before it
  };
  void Take();

  const TrafficCounts& myCounted;
  PassTimes& myPasses;
  std::deque<Sample> mySamples;
  QTimer myTimer;
};

}  // namespace corvane
