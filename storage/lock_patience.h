#pragma once

#include <chrono>

struct sqlite3;

namespace corvane {

// How long statements wait for a lock that another program holds on the database: up to a bound.
// After a wait in vain they wait for brief locks only, with eight tries a millisecond apart, until
// none was waited for in vain for a second, or five seconds are over. After such a brief wait in
// vain nobody waits for as long again, so that many statements take half of the time at most.
class LockPatience {
 public:
  // Sees to the waiting of this database from now on. To be outlived by nothing that runs there.
  void Watch(sqlite3* database, std::chrono::milliseconds bound);

 private:
  using Clock = std::chrono::steady_clock;

  // Called by SQLite when a lock is not free, with how often it was for the same statement; whether
  // to try again.
  static int OnLocked(void* self, int tries);
  bool Wait(int tries);

  std::chrono::milliseconds myBound{};
  Clock::time_point myWaitingSince;
  Clock::time_point myNoWaitUntil;
  Clock::time_point myBriefUntil;
  Clock::time_point myLatestEnd;  // of the time of brief waits
};

}  // namespace corvane
