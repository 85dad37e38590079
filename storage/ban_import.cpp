#include "storage/ban_import.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

#include <QFileInfo>

#include "framework/dates.h"
#include "platform/disk_sync.h"
#include "storage/bans.h"
#include "storage/database_connection.h"

namespace corvane {
namespace {

constexpr std::size_t kEntries = 64;
constexpr std::chrono::milliseconds kStepTime(2);
constexpr std::size_t kMany = 10'000;  // entries

DatabaseValue StoredEnd(const QDateTime& until) {
  return until.isValid() ? DatabaseValue(StoredUtc(until)) : DatabaseValue();
}

}  // namespace

BanImport::BanImport(DatabaseConnection& connection, List list, Ban terms)
    : myConnection(connection),
      myList(std::move(list)),
      mySize(myList.ranges.size() + myList.addresses.size() + myList.bans.size() +
             myList.rows.size()),
      myTerms(std::move(terms)) {}

BanImport::~BanImport() {
  if (!myConnection.IsReserved() && !myConnection.IsInTransaction()) return;
  myConnection.Reserve({});
  myConnection.Rollback();
}

BanImport::Progress BanImport::Step() {
  const auto end = std::chrono::steady_clock::now() + kStepTime;
  myConnection.Reserve({});
  // A query of a client that ran out of memory, for example, undoes all.
  bool works = myHasBegun ? myConnection.IsInTransaction() ||
                                myConnection.ReportFault("an error has undone the list")
                          : Begin();
  while (works && myNext < mySize && std::chrono::steady_clock::now() < end)
    works = StorePortion();
  if (works && myNext == mySize && IsSynced()) works = myConnection.Commit();
  if (!works) myConnection.Rollback();
  if (!myConnection.IsInTransaction()) return works ? Progress::Made : Progress::Failed;
  myConnection.Reserve("a list of bans is being stored");
  return Progress::More;
}

bool BanImport::IsSynced() {
  if (myNext < kMany) return true;
  if (!mySync.valid()) {
    const QString folder = QFileInfo(myConnection.File()).absolutePath();
    try {
      mySync = std::async(std::launch::async, [folder] { SyncFileSystem(folder); });
    } catch (const std::system_error&) {
      return true;  // no thread to be had: the commit takes longer
    }
  }
  return mySync.wait_for(kStepTime) == std::future_status::ready;
}

bool BanImport::Begin() {
  if (!myConnection.Begin()) return false;
  myHasBegun = true;
  if (!Bans::MakeEnds(myConnection) || !BanRanges::Make(myConnection)) return false;
  // Without them it only takes longer. A full disk, however, ends the transaction.
  for (const char* index :
       {"ban_ends_by_until ON ban_ends(until)", "ban_ranges_by_first ON ban_ranges(first)"}) {
    if (!myConnection.SQLExecute(std::string("CREATE INDEX IF NOT EXISTS ") + index) &&
        !myConnection.IsInTransaction()) {
      return false;
    }
  }
  const auto last = myConnection.SQLSelect(
      "SELECT (SELECT max(id) FROM bans) AS ban, (SELECT max(id) FROM ban_ranges) AS range");
  if (!last) return false;
  myLastBan = last->Integer("ban");
  myLastRange = last->Integer("range");
  // Another program may have deleted bans, but not their ends.
  return myConnection.SQLExecute("DELETE FROM ban_ends WHERE banid>?", {myLastBan});
}

bool BanImport::StoreBan(const Ban& ban) {
  const DatabaseValue until = StoredEnd(ban.until);
  return myConnection.SQLExecute(
             "INSERT INTO bans(address, \"by\", reason, bandate, banlength, network) "
             "SELECT ?,?,?,?,1,? WHERE NOT EXISTS (SELECT 1 FROM bans LEFT JOIN ban_ends ON "
             "banid=bans.id WHERE address=? AND (until IS NULL OR until>=?))",
             {ban.address, myTerms.by, ban.reason, StoredDate(myTerms.bandate), ban.network,
              ban.address, until}) &&
         NoteAdded(until);
}

bool BanImport::NoteAdded(const DatabaseValue& until) {
  const auto added = myConnection.SQLSelect(
      "SELECT count(*) AS count, max(id) AS last FROM bans WHERE id>?", {myLastBan});
  if (!added) return false;
  const std::int64_t before = myLastBan;
  myAddressCount += added->Integer("count");
  myLastBan = std::max(before, added->Integer("last"));
  return until == DatabaseValue() || myConnection.SQLExecute(
                                         "INSERT INTO ban_ends(banid, until) SELECT id,? FROM bans "
                                         "WHERE id>?",
                                         {until, before});
}

bool BanImport::StorePortion() {
  const std::size_t listed = myList.ranges.size() + myList.addresses.size();
  if (myNext >= listed) {
    const std::size_t next = myNext++ - listed;
    if (next < myList.bans.size()) return StoreBan(myList.bans[next]);
    const auto& [table, record] = myList.rows[next - myList.bans.size()];
    return myConnection.InsertRecord(table, record);
  }
  // JSON, of which SQLite makes rows: a statement for each entry takes many times as long.
  std::string addresses;
  std::string ranges;
  const auto add = [](std::string& json, const std::string& value) {
    json += (json.empty() ? "[" : ",") + value;
  };
  for (const std::size_t end = std::min(myNext + kEntries, listed); myNext < end; ++myNext) {
    if (myNext >= myList.ranges.size()) {
      add(addresses, '"' + myList.addresses[myNext - myList.ranges.size()] + '"');
      continue;
    }
    const AddressRange& range = myList.ranges[myNext];
    if (range.first == range.last) {
      add(addresses, '"' + TextFromIPv4(range.first) + '"');
    } else {
      add(ranges, '[' + std::to_string(range.first) + ',' + std::to_string(range.last) + ']');
    }
  }
  const DatabaseValue until = StoredEnd(myTerms.until);
  if (!addresses.empty() &&
      !(myConnection.SQLExecute(
            "INSERT INTO bans(address, \"by\", reason, bandate, banlength, network) "
            "SELECT DISTINCT value,?,?,?,1,'' FROM json_each(?) WHERE NOT EXISTS (SELECT 1 FROM "
            "bans LEFT JOIN ban_ends ON banid=bans.id WHERE address=value AND "
            "(until IS NULL OR until=?))",
            {myTerms.by, myTerms.reason, StoredDate(myTerms.bandate), addresses + ']', until}) &&
        NoteAdded(until))) {
    return false;
  }
  if (ranges.empty()) return true;
  if (!myConnection.SQLExecute(
          "INSERT INTO ban_ranges(first, last, reason, until) SELECT DISTINCT "
          "json_extract(value, '$[0]'), json_extract(value, '$[1]'),?,? FROM json_each(?) AS one "
          "WHERE NOT EXISTS (SELECT 1 FROM ban_ranges AS r WHERE "
          "r.first=json_extract(one.value, '$[0]') AND r.last=json_extract(one.value, '$[1]') AND "
          "(r.until IS NULL OR r.until=?))",
          {myTerms.reason, until, ranges + ']', until})) {
    return false;
  }
  auto rows =
      myConnection.SQLSelect("SELECT id, first, last FROM ban_ranges WHERE id>?", {myLastRange});
  for (; rows && !rows->EndOfRows(); rows->MoveNext()) {
    myLastRange = std::max(myLastRange, rows->Integer("id"));
    myRanges.push_back({rows->Integer("id"),
                        {static_cast<std::uint32_t>(rows->Integer("first")),
                         static_cast<std::uint32_t>(rows->Integer("last"))},
                        myTerms.reason,
                        myTerms.until});
  }
  return rows.has_value();
}

}  // namespace corvane
