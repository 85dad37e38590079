#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <QTimer>

#include "storage/ban.h"
#include "storage/waiting_bans.h"

namespace corvane {

class DatabaseConnection;

// The only door to the bans: the table "bans", and the bans that the database refused. A refused
// ban counts, is listed and can be lifted like any other, outlives the server (WaitingBans), and is
// tried again with growing pauses until it is stored. Borrows the connection, whose database is
// open already. Needs a QCoreApplication.
//
// The destructor tries to store what waits, for a second at most. What the disk takes neither into
// the database nor into the file is lost, which standard error says.
class Bans {
 public:
  explicit Bans(DatabaseConnection& connection);
  ~Bans();
  Bans(const Bans&) = delete;
  Bans& operator=(const Bans&) = delete;

  // Bans the address from this moment on. Returns whether the ban is in the database; where it is
  // not, it is in the file, unless the disk refuses that, too.
  bool Add(const std::string& address, const std::string& by, const std::string& reason,
           const std::string& network);

  // Whether a ban names the address, whatever its network and date. False when the query fails.
  bool IsBanned(const std::string& address);

  // Reads the next few bans behind a place in the list, and moves the place behind them. A list
  // begins at kBegin and is over at kEnd. The stored bans come by their numbers, and with the last
  // of them all that wait. None when the query fails, which ends the list.
  std::optional<std::vector<Ban>> Portion(std::int64_t& place);
  static constexpr std::int64_t kBegin = std::numeric_limits<std::int64_t>::min();
  static constexpr std::int64_t kEnd = std::numeric_limits<std::int64_t>::max();

  // The ban with this number. None also when the query fails.
  std::optional<Ban> Find(std::int64_t id);

  // Lifts the bans with these numbers, the stored ones in one transaction. Returns whether none is
  // left; what is wrong is the connection's error.
  [[nodiscard]] bool Lift(const std::vector<std::int64_t>& ids);

 private:
  bool Store(const Ban& ban);
  std::optional<std::vector<Ban>> Select(const std::string& condition, std::int64_t value);
  void Retry();
  // Stores what waits until one is refused or the time is over. Returns whether none was refused.
  bool StoreFor(std::chrono::milliseconds time);

  DatabaseConnection& myConnection;
  WaitingBans myWaiting;
  std::chrono::milliseconds myPause;
  QTimer myRetry;
};

}  // namespace corvane
