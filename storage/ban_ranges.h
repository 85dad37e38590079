#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <QDateTime>
#include <QTimer>

#include "framework/address_ranges.h"
#include "storage/ban.h"
#include "storage/waiting_bans.h"

namespace corvane {

class DatabaseConnection;

// A ban of a range of addresses.
struct BanRange {
  std::int64_t id = 0;
  AddressRange range;
  std::string reason;
  QDateTime until = {};  // invalid if it never ends

  bool HasEnded(const QDateTime& time) const { return until.isValid() && until <= time; }
};

// The bans of address ranges, which may overlap: the table "ban_ranges", which is made when it is
// missing and first needed, and the ranges that the database refused. Those wait as bans do (Bans),
// in their own file, and are tried again each second. Ranges are asked in memory; what another
// program changes counts from the next start. Borrows the connection. Needs a QCoreApplication.
class BanRanges {
 public:
  explicit BanRanges(DatabaseConnection& connection);
  ~BanRanges();
  BanRanges(const BanRanges&) = delete;
  BanRanges& operator=(const BanRanges&) = delete;

  // Makes the table if it is missing. Returns whether that worked.
  static bool Make(DatabaseConnection& connection);
  // Bans the range at once, until then if the date is valid. Returns whether it is stored; if not,
  // it is in the file of waiting ranges, unless that cannot be written either.
  bool Add(const AddressRange& range, const std::string& reason, const QDateTime& until);

  // Bans the ranges, which another class has stored.
  void TakeStored(std::vector<BanRange>& ranges);

  // The range with this address that lasts longest; null if all have ended. Valid until a range is
  // added or lifted. Takes O(log n).
  const BanRange* Find(std::string_view address, const QDateTime& time);

  // All ranges, also those that have ended, the waiting ones last. Valid as long.
  const std::vector<BanRange>& All();
  // When the next one ends; invalid if none does.
  QDateTime NextEnd();

  // Lifts the ranges with these numbers in one transaction. Returns whether none of them is left.
  [[nodiscard]] bool Lift(const std::vector<std::int64_t>& ids);

 private:
  // The addresses for which the same range lasts longest.
  struct Segment {
    AddressRange addresses;
    std::size_t range;
  };

  void Load();
  // The stored ranges. Whatever was found in memory is found again (Index).
  std::vector<BanRange>& Stored();
  std::optional<std::int64_t> Store(const BanRange& ban);
  // Stores waiting ranges until one is refused.
  void StoreWaiting();
  // Updates what is found in memory, if something has changed.
  void Index();

  DatabaseConnection& myConnection;
  WaitingBans myWaiting;
  QTimer myRetry;
  bool myIsIndexed = false;
  std::vector<BanRange> myAll;  // indexed: followed by those that wait
  std::size_t myStoredCount = 0;
  QDateTime myNextEnd;
  std::vector<Segment> mySegments;  // disjoint, in order
};

}  // namespace corvane
