#include "storage/lock_patience.h"

#include <algorithm>
#include <thread>

#include <sqlite3.h>

namespace corvane {

namespace {

// Tries instead of a time, because a busy machine sleeps longer than asked.
constexpr int kBriefTries = 8;
constexpr std::chrono::milliseconds kBriefSleep(1);
constexpr std::chrono::seconds kImpatience(1);
constexpr std::chrono::seconds kMaxImpatience(5);
constexpr std::chrono::milliseconds kMaxSleep(20);

}  // namespace

void LockPatience::Watch(sqlite3* database, std::chrono::milliseconds bound) {
  myBound = bound;
  myNoWaitUntil = myBriefUntil = {};
  sqlite3_busy_handler(database, OnLocked, this);
}

int LockPatience::OnLocked(void* self, int tries) {
  return static_cast<LockPatience*>(self)->Wait(tries) ? 1 : 0;
}

bool LockPatience::Wait(int tries) {
  const Clock::time_point now = Clock::now();
  if (now < myNoWaitUntil) return false;
  if (tries == 0) myWaitingSince = now;
  const bool isBrief = now < myBriefUntil;
  if (isBrief ? tries >= kBriefTries : now - myWaitingSince >= myBound) {
    if (isBrief) {
      myNoWaitUntil = now + (now - myWaitingSince);
    } else {
      myLatestEnd = now + kMaxImpatience;
    }
    myBriefUntil = std::min(now + kImpatience, myLatestEnd);
    return false;
  }
  std::this_thread::sleep_for(isBrief ? kBriefSleep
                                      : std::min(std::chrono::milliseconds(tries + 1), kMaxSleep));
  return true;
}

}  // namespace corvane
