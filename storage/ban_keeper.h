#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>

#include <QTimer>

#include "storage/bans_table.h"

namespace corvane {

// Sees to it that a ban counts as soon as it is issued: stores it, and where the database refuses
// keeps it in memory, where it counts too, and tries again with growing pauses until it is stored.
// Borrows the table. When it goes it tries once more, for a second at most, and standard error says
// what is lost. Needs a QCoreApplication.
class BanKeeper {
 public:
  explicit BanKeeper(BansTable& bans);
  ~BanKeeper();
  BanKeeper(const BanKeeper&) = delete;
  BanKeeper& operator=(const BanKeeper&) = delete;

  // Bans the address from this moment on.
  void Add(const std::string& address, const std::string& by, const std::string& reason,
           const std::string& network);

  // Whether the address is banned, as far as the database says so.
  bool IsBanned(const std::string& address);

 private:
  bool IsWaiting(const std::string& address) const;
  void Keep(BansTable::Ban ban);
  void Retry();
  // Stores what waits, the oldest first, until one is refused or the time is over; whether none was
  // refused.
  bool StoreFor(std::chrono::milliseconds time);

  BansTable& myBans;
  std::deque<BansTable::Ban> myWaiting;
  std::size_t myWaitingBytes = 0;
  std::chrono::milliseconds myPause;
  QTimer myRetry;
};

}  // namespace corvane
