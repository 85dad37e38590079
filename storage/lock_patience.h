#pragma once

#include <chrono>

struct sqlite3;

namespace corvane {

// How long statements wait for a lock that another program holds on the database: up to a bound.
// After a wait in vain nobody waits until no lock was met for a second, or five seconds are over,
// so that many statements cost one wait.
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
  Clock::time_point myLatestEnd;  // of the time without waiting
};

}  // namespace corvane
