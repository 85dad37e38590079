#include "storage/ban_ranges.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <set>
#include <utility>

#include <queue>

#include "framework/dates.h"
#include "storage/database_connection.h"

namespace corvane {
namespace {

constexpr std::chrono::seconds kRetryPause(1);

bool LastsLonger(const BanRange& one, const BanRange& other) {
  return other.until.isValid() && (!one.until.isValid() || one.until > other.until);
}

std::optional<AddressRange> RangeOf(std::int64_t first, std::int64_t last) {
  constexpr std::int64_t kMax = 0xFFFFFFFF;
  if (first < 0 || first > last || last > kMax) return std::nullopt;
  return AddressRange{static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(last)};
}

}  // namespace

BanRanges::BanRanges(DatabaseConnection& connection)
    : myConnection(connection),
      myWaiting(connection.File(), QStringLiteral("corvane-ranges.waiting")) {
  myRetry.setSingleShot(true);
  QObject::connect(&myRetry, &QTimer::timeout, [this] { StoreWaiting(); });
  Load();
  StoreWaiting();
}

BanRanges::~BanRanges() {
  StoreWaiting();
  if (!myWaiting.Save()) {
    myConnection.Report("banned ranges that could not be stored and are lost: " +
                        std::to_string(myWaiting.All().size()));
  }
}

bool BanRanges::Make(DatabaseConnection& connection) {
  return connection.SQLExecute(
      "CREATE TABLE IF NOT EXISTS ban_ranges (id INTEGER PRIMARY KEY, first INTEGER, last INTEGER, "
      "reason TEXT, until TEXT)");
}

void BanRanges::Load() {
  auto rows = myConnection.SQLSelect("SELECT * FROM ban_ranges");
  for (; rows && !rows->EndOfRows(); rows->MoveNext()) {
    const auto range = RangeOf(rows->Integer("first"), rows->Integer("last"));
    // An empty text: the column is missing.
    if (range && !rows->Text("last").empty()) {
      myAll.push_back(
          {rows->Integer("id"), *range, rows->Text("reason"), UtcFromStored(rows->Text("until"))});
    } else {
      myConnection.Report("ban_ranges: row " + rows->Text("id") + " is no range and bans nobody");
    }
  }
}

std::vector<BanRange>& BanRanges::Stored() {
  if (std::exchange(myIsIndexed, false)) myAll.resize(myStoredCount);
  return myAll;
}

void BanRanges::TakeStored(std::vector<BanRange>& ranges) {
  std::ranges::move(ranges, std::back_inserter(Stored()));
}

bool BanRanges::Add(const AddressRange& range, const std::string& reason, const QDateTime& until) {
  std::vector<BanRange>& stored = Stored();
  BanRange ban{0, range, reason, until};
  if (const auto id = Store(ban)) {
    ban.id = *id;
    stored.push_back(std::move(ban));
    return true;
  }
  myWaiting.Add({0, TextOf(range), "", reason, QDateTime::currentDateTime(), "", until});
  if (!myRetry.isActive()) myRetry.start(kRetryPause);
  return false;
}

std::optional<std::int64_t> BanRanges::Store(const BanRange& ban) {
  if (!myConnection.Begin()) return std::nullopt;
  const bool isStored =
      Make(myConnection) &&
      myConnection.SQLExecute(
          "INSERT INTO ban_ranges(first, last, reason, until) VALUES(?,?,?,?)",
          {std::int64_t{ban.range.first}, std::int64_t{ban.range.last}, ban.reason,
           ban.until.isValid() ? DatabaseValue(StoredUtc(ban.until)) : DatabaseValue()});
  if (!isStored) myConnection.Rollback();
  if (!isStored || !myConnection.Commit()) return std::nullopt;
  return myConnection.LastInserted();
}

void BanRanges::StoreWaiting() {
  while (!myWaiting.All().empty()) {
    const Ban& first = myWaiting.All().front();
    const auto range = RangeFromText(first.address);
    BanRange ban{0, range.value_or(AddressRange{}), first.reason, first.until};
    // Left in the file by a killed server, a stored range would end twice.
    const auto isSame = [&ban](const BanRange& other) {
      return other.range == ban.range && other.reason == ban.reason && other.until == ban.until;
    };
    std::vector<BanRange>& stored = Stored();
    const auto same = std::ranges::find_if(stored, isSame);
    const bool isThere = !range || same != stored.end();
    const auto id = isThere ? std::optional(range ? same->id : 0) : Store(ban);
    if (!id) {
      myWaiting.FirstIsRefused();
      myRetry.start(kRetryPause);
      break;
    }
    myWaiting.FirstIsStored(*id);
    ban.id = *id;
    if (!isThere) stored.push_back(std::move(ban));
  }
  myWaiting.TidyFile();
}

const BanRange* BanRanges::Find(std::string_view address, const QDateTime& time) {
  Index();
  if (mySegments.empty()) return nullptr;
  const auto number = IPv4FromText(address);
  if (!number) return nullptr;
  const auto after = std::ranges::upper_bound(
      mySegments, *number, {}, [](const Segment& segment) { return segment.addresses.first; });
  if (after == mySegments.begin()) return nullptr;
  const Segment& segment = *std::prev(after);
  const BanRange& found = myAll[segment.range];
  return *number <= segment.addresses.last && !found.HasEnded(time) ? &found : nullptr;
}

const std::vector<BanRange>& BanRanges::All() {
  Index();
  return myAll;
}

QDateTime BanRanges::NextEnd() {
  Index();
  return myNextEnd;
}

bool BanRanges::Lift(const std::vector<std::int64_t>& ids) {
  std::set<std::int64_t> stored(ids.begin(), ids.end());
  Stored();
  if (!myWaiting.Remove(stored)) {
    return myConnection.ReportFault("the file of waiting ranges could not be written");
  }
  if (stored.empty()) return true;
  std::set<std::int64_t> rows;
  for (const std::int64_t id : stored)
    rows.insert(myWaiting.StoredAs(id));
  const auto lift = [this](std::int64_t id) {
    return myConnection.SQLExecute("DELETE FROM ban_ranges WHERE id=?", {id});
  };
  if (!myConnection.Begin()) return false;
  const bool areLifted = std::ranges::all_of(rows, lift);
  if (!areLifted) myConnection.Rollback();
  if (!areLifted || !myConnection.Commit()) return false;
  std::erase_if(Stored(), [&rows](const BanRange& ban) { return rows.contains(ban.id); });
  return true;
}

void BanRanges::Index() {
  if (std::exchange(myIsIndexed, true)) return;
  myStoredCount = myAll.size();
  for (const Ban& ban : myWaiting.All()) {
    if (const auto range = RangeFromText(ban.address)) {
      myAll.push_back({ban.id, *range, ban.reason, ban.until});
    }
  }
  const auto endsLater = [](const BanRange& one, const BanRange& other) {
    return LastsLonger(other, one);
  };
  const auto first = std::ranges::min_element(myAll, endsLater);
  myNextEnd = first == myAll.end() ? QDateTime() : first->until;
  // Walks over the addresses at which a range begins or has ended. The queue holds the ranges that
  // have begun, the one that lasts longest on top; those behind the walk leave when they get there.
  mySegments.clear();
  std::vector<std::size_t> byFirst(myAll.size());
  std::vector<std::uint64_t> stops;
  for (std::size_t i = 0; i < myAll.size(); ++i) {
    byFirst[i] = i;
    stops.push_back(myAll[i].range.first);
    stops.push_back(std::uint64_t{myAll[i].range.last} + 1);
  }
  std::ranges::sort(byFirst, {}, [this](std::size_t i) { return myAll[i].range.first; });
  std::ranges::sort(stops);
  const auto isBelow = [this](std::size_t one, std::size_t other) {
    return LastsLonger(myAll[other], myAll[one]);
  };
  std::priority_queue<std::size_t, std::vector<std::size_t>, decltype(isBelow)> open(isBelow);
  auto next = byFirst.begin();
  for (std::size_t i = 0; i + 1 < stops.size(); ++i) {
    if (stops[i] == stops[i + 1]) continue;
    for (; next != byFirst.end() && myAll[*next].range.first <= stops[i]; ++next)
      open.push(*next);
    while (!open.empty() && myAll[open.top()].range.last < stops[i])
      open.pop();
    if (open.empty()) continue;
    const AddressRange addresses{static_cast<std::uint32_t>(stops[i]),
                                 static_cast<std::uint32_t>(stops[i + 1] - 1)};
    mySegments.push_back({addresses, open.top()});
  }
}

}  // namespace corvane
