#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QDateTime>
#include <QTimer>

#include "framework/signal.h"
#include "storage/ban.h"
#include "storage/ban_import.h"
#include "storage/ban_ranges.h"
#include "storage/database_connection.h"
#include "storage/waiting_bans.h"

namespace corvane {

// All access to bans: those of ranges (BanRanges), the table "bans", the table "ban_ends" with
// their ends, which is made when it is missing and first needed, and the bans that the database
// refused. A refused ban waits: it is enforced, listed and lifted like any other, survives a
// restart (WaitingBans), and is tried again at growing intervals until it is stored. Borrows the
// connection, whose database must be open. Needs a QCoreApplication.
//
// A ban that has ended by the wall clock is neither enforced nor listed. It is deleted by Lift, for
// which EndsDue asks, and so are ranges.
//
// The destructor tries to store waiting bans for up to a second. Bans that can be written neither
// to the database nor to the file are lost; standard error reports how many.
class Bans {
 public:
  explicit Bans(DatabaseConnection& connection);
  ~Bans();
  Bans(const Bans&) = delete;
  Bans& operator=(const Bans&) = delete;

  // The wall clock; replaced in tests.
  std::function<QDateTime()> Now = &QDateTime::currentDateTimeUtc;

  // Event: some bans or ranges have ended (Ended, EndedRanges). Raised again each second until they
  // are lifted, and at most a second late if the wall clock is set or the machine was asleep.
  Signal<> EndsDue;

  // Bans the address at once, until then if the date is valid. Returns whether the ban is in the
  // database; if not, it is in the file of waiting bans, unless that cannot be written either.
  bool Add(const std::string& address, const std::string& by, const std::string& reason,
           const std::string& network, const QDateTime& until = {});

  // Whether any ban names the address, or a range contains it. A failed query finds no ban.
  bool IsBanned(const std::string& address);

  // Returns the next portion of the list of bans and advances `place`, which starts at kBegin and
  // is kEnd after the last portion. Stored bans come first, a few per portion, by number; the last
  // portion ends with all waiting bans. If the query fails, returns none and sets kEnd.
  std::optional<std::vector<Ban>> Portion(std::int64_t& place);
  static constexpr std::int64_t kBegin = std::numeric_limits<std::int64_t>::min();
  static constexpr std::int64_t kEnd = std::numeric_limits<std::int64_t>::max();

  // Bans that have ended: those that wait or, if there is none, at most 1000 stored ones, the
  // earliest first. None if the query fails.
  std::optional<std::vector<Ban>> Ended();

  bool AddRange(const AddressRange& range, const std::string& reason, const QDateTime& until);
  // The range with the address that lasts longest; null if there is none.
  const BanRange* RangeOf(const std::string& address) { return myRanges.Find(address, Now()); }
  const std::vector<BanRange>& Ranges() { return myRanges.All(); }
  // At most 1000.
  std::vector<BanRange> EndedRanges();
  [[nodiscard]] bool LiftRanges(const std::vector<std::int64_t>& ids);

  // Adds them in one transaction, a portion per turn of Qt's loop (BanImport). Bans that are added
  // meanwhile wait; other changes of the database fail. Calls `done` at the end; on failure with an
  // error, and bans none. Returns false if another import is at work.
  using ImportDone = std::function<void(const std::string& error, BanImport& import)>;
  [[nodiscard]] bool Import(BanImport::List list, const std::string& by, const std::string& reason,
                            const QDateTime& until, ImportDone done);

  // Makes the table of ends if it is missing. Returns whether that worked.
  static bool MakeEnds(DatabaseConnection& connection);

  // All bans of an address. None if the query fails.
  std::optional<std::vector<Ban>> Of(const std::string& address);
  // The ban with this number. None also if the query fails.
  std::optional<Ban> Find(std::int64_t id);

  // Lifts the bans with these numbers, the stored ones in one transaction. Returns whether none of
  // them is left; on failure the connection has the error.
  [[nodiscard]] bool Lift(const std::vector<std::int64_t>& ids);

 private:
  // Returns the ban's number in the database; none if it is refused.
  std::optional<std::int64_t> Store(const Ban& ban);
  std::optional<std::int64_t> StoreWithEnd(const Ban& ban, const DatabaseRecord& record);
  // The end is read too if one of the stored bans has any.
  std::optional<std::vector<Ban>> Select(const std::string& condition, const DatabaseValue& value);
  std::optional<std::vector<Ban>> SelectAll(std::string_view query,
                                            const DatabaseConnection::Values& values);
  // Reads when the next stored ban ends.
  void ReadNextEnd();
  void WaitForEnds();
  void StepImport();
  void Retry();
  // Stores waiting bans until one is refused or the time is over. Returns whether none was refused.
  bool StoreFor(std::chrono::milliseconds time);

  DatabaseConnection& myConnection;
  WaitingBans myWaiting;
  BanRanges myRanges;
  std::chrono::milliseconds myPause;
  QTimer myRetry;
  std::unique_ptr<BanImport> myImport;
  ImportDone myImportDone;
  QTimer myImportSteps;
  QDateTime myNextEnd;  // of the stored bans; invalid if none ends
  QDateTime myNextRangeEnd;
  QTimer myEndTimer;
};

}  // namespace corvane
