#pragma once

#include <chrono>
#include <deque>

#include <QTimer>

#include "net/traffic.h"

namespace corvane {

// How much goes over the connections a second, over the last ten seconds: what
// `corvanectl status` shows of how busy the server is, in place of totals since its start. Borrows
// the counts.
class Rates {
 public:
  explicit Rates(const Traffic& counted);

  struct Rate {
    double messages = 0;
    double received = 0;  // bytes
    double sent = 0;
  };
  Rate Now();

 private:
  struct Sample {
    std::chrono::steady_clock::time_point time;
    Traffic counted;
  };
  void Take();

  const Traffic& myCounted;
  std::deque<Sample> mySamples;
  QTimer myTimer;
};

}  // namespace corvane
