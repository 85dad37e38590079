#pragma once

#include <chrono>

struct sqlite3;

namespace corvane {

// Bounds how long statements wait for another program's lock on the database.
//
// States: normally a statement waits up to the given bound. A timeout starts a period of brief
// waits of eight tries 1 ms apart. The period ends after a second without a timeout, and after 5 s
// at most. After a brief wait that times out, statements do not wait at all for as long as it took:
// waiting takes at most half of the time.
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
