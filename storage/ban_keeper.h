#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>

#include <QTimer>

#include "storage/bans_table.h"
#include "storage/waiting_bans.h"

namespace corvane {

// Sees to it that a ban counts as soon as it is issued: stores it, and where the database refuses
// keeps it in memory, where it counts too, and in a file beside the database, and tries again with
// growing pauses until it is stored. When it goes it tries for a second at most; what waits then is
// read from the file by the next one, and standard error says what the disk did not take either.
// Borrows the table, whose database is open already. Needs a QCoreApplication.
class BanKeeper {
 public:
  explicit BanKeeper(BansTable& bans);
  ~BanKeeper();
  BanKeeper(const BanKeeper&) = delete;
  BanKeeper& operator=(const BanKeeper&) = delete;

  // Bans the address from this moment on. Whether that is stored already.
  bool Add(const std::string& address, const std::string& by, const std::string& reason,
           const std::string& network);

  // Whether the address is banned, as far as the database says so.
  bool IsBanned(const std::string& address);

 private:
  bool IsWaiting(const std::string& address) const;
  void Keep(BansTable::Ban ban);
  void Retry();
  // Stores what waits, the oldest first, until one is refused, which goes to the end, or the time
  // is over; whether none was refused.
  bool StoreFor(std::chrono::milliseconds time);

  BansTable& myBans;
  const WaitingBans myFile;
  bool myIsFileWhole = true;
  std::deque<BansTable::Ban> myWaiting;
  std::size_t myWaitingBytes = 0;
  std::chrono::milliseconds myPause;
  QTimer myRetry;
};

}  // namespace corvane
