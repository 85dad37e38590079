#include "storage/lock_patience.h"

#include <algorithm>
#include <thread>

#include <sqlite3.h>

namespace corvane {

namespace {

constexpr std::chrono::seconds kPause(1);
constexpr std::chrono::seconds kLongestWait(5);
constexpr std::chrono::milliseconds kLongestSleep(20);

}  // namespace

void LockPatience::Watch(sqlite3* database, std::chrono::milliseconds bound) {
  myBound = bound;
  myNoWaitUntil = {};
  sqlite3_busy_handler(database, OnLocked, this);
}

int LockPatience::OnLocked(void* self, int tries) {
  return static_cast<LockPatience*>(self)->Wait(tries) ? 1 : 0;
}

bool LockPatience::Wait(int tries) {
  const Clock::time_point now = Clock::now();
  if (now < myNoWaitUntil) {
    myNoWaitUntil = std::min(now + kPause, myLatestEnd);
    return false;
  }
  if (tries == 0) myWaitingSince = now;
  if (now - myWaitingSince >= myBound) {
    myNoWaitUntil = now + kPause;
    myLatestEnd = now + kLongestWait;
    return false;
  }
  std::this_thread::sleep_for(std::min(std::chrono::milliseconds(tries + 1), kLongestSleep));
  return true;
}

}  // namespace corvane
