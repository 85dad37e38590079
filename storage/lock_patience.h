#pragma once

#include <chrono>

struct sqlite3;

namespace corvane {

// Bounds how long statements wait for another program's lock on the database.
//
// States: normally a statement waits up to the given bound. If that times out, statements wait only
// briefly (eight tries, 1 ms apart) until a second has passed without a timeout, and for 5 s at
// most. A brief wait that times out is followed by an equally long time in which no statement
// waits, so at most half of the time is spent waiting.
class LockPatience {
 public:
  // Installs itself as the database's busy handler. Must outlive all statements that run there.
  void Watch(sqlite3* database, std::chrono::milliseconds bound);

 private:
  using Clock = std::chrono::steady_clock;

  // SQLite's busy handler: `tries` counts the calls for one lock. Returns whether to try again.
  static int OnLocked(void* self, int tries);
  bool Wait(int tries);

  std::chrono::milliseconds myBound{};
  Clock::time_point myWaitingSince;
  Clock::time_point myNoWaitUntil;
  Clock::time_point myBriefUntil;
  Clock::time_point myLatestEnd;  // of the period of brief waits
};

}  // namespace corvane
