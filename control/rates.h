#pragma once

#include <chrono>
#include <deque>

#include <QTimer>

#include "net/poll_loop.h"

namespace corvane {

// How much goes over the connections a second, over the last ten seconds: what
// `corvanectl status` shows of how busy the server is, in place of totals since its start. Borrows
// the loop.
class Rates {
 public:
  explicit Rates(PollLoop& loop);

  struct Rate {
    double messages = 0;
    double received = 0;  // bytes
    double sent = 0;
  };
  Rate Now();

 private:
  struct Sample {
    std::chrono::steady_clock::time_point time;
    PollLoop::Traffic counted;
  };
  void Take();

  PollLoop& myLoop;
  std::deque<Sample> mySamples;
  QTimer myTimer;
};

}  // namespace corvane
