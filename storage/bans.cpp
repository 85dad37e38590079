#include "storage/bans.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>
#include <thread>
#include <tuple>
#include <utility>

#include "framework/dates.h"

namespace corvane {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kPortion = 16;
constexpr std::size_t kMaxEnded = 1000;  // each with its lines in the log
constexpr std::chrono::milliseconds kFirstPause(100);
constexpr std::chrono::milliseconds kMaxPause(10'000);
constexpr std::chrono::milliseconds kRetryTime(20);
constexpr std::chrono::milliseconds kEndTime(1000);
constexpr std::chrono::milliseconds kEndPause(10);
constexpr std::chrono::milliseconds kMaxClockPause(1000);

// A text of another form is no end.
constexpr std::string_view kHasEnded = "until<=? AND until LIKE '____-__-__ __:__:__'";

// Every select but the system's own question: the same for databases with and without ends.
constexpr std::string_view kWithEnds =
    "SELECT bans.*, until FROM bans LEFT JOIN ban_ends ON banid=bans.id ";

}  // namespace

Bans::Bans(DatabaseConnection& connection)
    : myConnection(connection),
      myWaiting(connection.File(), QStringLiteral("corvane-bans.waiting")),
      myRanges(connection),
      myPause(kFirstPause) {
  myRetry.setSingleShot(true);
  QObject::connect(&myRetry, &QTimer::timeout, [this] { Retry(); });
  QObject::connect(&myImportSteps, &QTimer::timeout, [this] { StepImport(); });
  myEndTimer.setSingleShot(true);
  QObject::connect(&myEndTimer, &QTimer::timeout, [this] {
    const auto ended = Ended();
    if ((ended && !ended->empty()) || !EndedRanges().empty()) EndsDue();
    WaitForEnds();
  });
  ReadNextEnd();
  if (!myWaiting.All().empty()) Retry();
}

Bans::~Bans() {
  myImport.reset();
  if (myWaiting.All().empty()) return;
  const Clock::time_point end = Clock::now() + kEndTime;
  while (!StoreFor(kEndTime) && Clock::now() < end)
    std::this_thread::sleep_for(kEndPause);
  if (myWaiting.Save()) return;
  myConnection.Report("bans that could not be stored and are lost: " +
                      std::to_string(myWaiting.All().size()));
}

bool Bans::Add(const std::string& address, const std::string& by, const std::string& reason,
               const std::string& network, const QDateTime& until) {
  Ban ban{0, address, by, reason, QDateTime::currentDateTime(), network, until};
  if (Store(ban)) return true;
  myWaiting.Add(std::move(ban));
  WaitForEnds();
  if (!myRetry.isActive()) myRetry.start(myPause);
  return false;
}

std::optional<std::int64_t> Bans::Store(const Ban& ban) {
  DatabaseRecord record;
  record.SetText("address", ban.address);
  record.SetText("by", ban.by);
  record.SetText("reason", ban.reason);
  record.SetDate("bandate", ban.bandate);
  record.SetInteger("banlength", 1);  // nothing reads it: deliberate
  record.SetText("network", ban.network);
  if (ban.until.isValid() || myNextEnd.isValid()) return StoreWithEnd(ban, record);
  if (!myConnection.InsertRecord("bans", record) || !myConnection.Commit()) return std::nullopt;
  return myConnection.LastInserted();
}

std::optional<std::int64_t> Bans::StoreWithEnd(const Ban& ban, const DatabaseRecord& record) {
  if (!myConnection.Begin()) return std::nullopt;
  std::int64_t id = 0;
  const auto store = [&] {
    if (!MakeEnds(myConnection)) return false;
    if (!ban.until.isValid()) {
      if (!myConnection.InsertRecord("bans", record)) return false;
      id = myConnection.LastInserted();
      // Another program may have deleted a ban of this number, but not its end.
      return myConnection.SQLExecute("DELETE FROM ban_ends WHERE banid=?", {id});
    }
    // Left in the file of waiting bans by a killed server, it would end twice.
    const auto same =
        SelectAll(std::string(kWithEnds) + "WHERE address=? AND reason=? AND bandate=? AND until=?",
                  {ban.address, ban.reason, StoredDate(ban.bandate), StoredUtc(ban.until)});
    if (same && !same->empty()) {
      id = same->front().id;
      return true;
    }
    if (!myConnection.InsertRecord("bans", record)) return false;
    id = myConnection.LastInserted();
    return myConnection.SQLExecute("INSERT OR REPLACE INTO ban_ends(banid, until) VALUES(?,?)",
                                   {id, StoredUtc(ban.until)});
  };
  const bool isStored = store();
  if (!isStored) myConnection.Rollback();
  if (!isStored || !myConnection.Commit()) return std::nullopt;
  if (ban.until.isValid() && !(myNextEnd.isValid() && myNextEnd <= ban.until)) {
    myNextEnd = ban.until;
  }
  WaitForEnds();
  return id;
}

bool Bans::IsBanned(const std::string& address) {
  const QDateTime now = Now();
  if (myWaiting.Has(address, now)) return true;
  // An address has no quotes: pasted into the text it would give the same.
  if (!myConnection.HasRowWith("SELECT * FROM bans WHERE address=?", {address})) {
    return myRanges.Find(address, now) != nullptr;
  }
  if (!myNextEnd.isValid() || myNextEnd > now) return true;
  static const std::string kHolds =
      "SELECT 1 FROM bans WHERE address=? AND NOT EXISTS"
      " (SELECT 1 FROM ban_ends WHERE banid=bans.id AND " +
      std::string(kHasEnded) + ')';
  return myConnection.HasRowWith(kHolds, {address, StoredUtc(now)}) || myConnection.Error() ||
         myRanges.Find(address, now) != nullptr;
}

bool Bans::AddRange(const AddressRange& range, const std::string& reason, const QDateTime& until) {
  const bool isStored = myRanges.Add(range, reason, until);
  WaitForEnds();
  return isStored;
}

bool Bans::Import(BanImport::List list, const std::string& by, const std::string& reason,
                  const QDateTime& until, ImportDone done) {
  if (myImport) return false;
  const Ban terms{0, "", by, reason, QDateTime::currentDateTime(), "", until};
  myImport = std::make_unique<BanImport>(myConnection, std::move(list), terms);
  myImportDone = std::move(done);
  myImportSteps.start();
  return true;
}

void Bans::StepImport() {
  const BanImport::Progress progress = myImport->Step();
  if (progress == BanImport::Progress::More) return;
  myImportSteps.stop();
  const bool isMade = progress == BanImport::Progress::Made;
  const std::string error = isMade ? "" : myConnection.ErrorMessage();
  const std::unique_ptr<BanImport> import = std::move(myImport);
  if (isMade) {
    myRanges.TakeStored(import->Ranges());
    ReadNextEnd();
  }
  if (!myWaiting.All().empty()) Retry();
  std::exchange(myImportDone, nullptr)(error, *import);
}

bool Bans::MakeEnds(DatabaseConnection& connection) {
  return connection.SQLExecute(
      "CREATE TABLE IF NOT EXISTS ban_ends (banid INTEGER PRIMARY KEY, until TEXT)");
}

std::vector<BanRange> Bans::EndedRanges() {
  std::vector<BanRange> ended;
  const QDateTime now = Now();
  if (myNextRangeEnd.isValid() && myNextRangeEnd <= now) {
    for (const BanRange& range : myRanges.All()) {
      if (range.HasEnded(now)) ended.push_back(range);
      if (ended.size() == kMaxEnded) break;
    }
  }
  return ended;
}

bool Bans::LiftRanges(const std::vector<std::int64_t>& ids) {
  const bool areLifted = myRanges.Lift(ids);
  WaitForEnds();
  return areLifted;
}

std::optional<std::vector<Ban>> Bans::Portion(std::int64_t& place) {
  auto bans = Select("bans.id>? ORDER BY bans.id LIMIT " + std::to_string(kPortion), place);
  place = bans && bans->size() == kPortion ? bans->back().id : kEnd;
  if (bans && place == kEnd) {
    // Together with the last stored ones: a ban that is stored meanwhile would be missed otherwise.
    bans->insert(bans->end(), myWaiting.All().begin(), myWaiting.All().end());
  }
  if (bans) std::erase_if(*bans, [now = Now()](const Ban& ban) { return ban.HasEnded(now); });
  return bans;
}

std::optional<std::vector<Ban>> Bans::Ended() {
  const QDateTime now = Now();
  std::vector<Ban> ended;
  // By themselves: they can be lifted although the database refuses.
  std::ranges::copy_if(myWaiting.All(), std::back_inserter(ended),
                       [&now](const Ban& ban) { return ban.HasEnded(now); });
  if (!ended.empty()) return ended;
  if (myNextEnd.isValid() && myNextEnd <= now) {
    auto stored = SelectAll(std::string(kWithEnds) + "WHERE " + std::string(kHasEnded) +
                                " ORDER BY until LIMIT " + std::to_string(kMaxEnded),
                            {StoredUtc(now)});
    if (!stored) return std::nullopt;
    ended = *std::move(stored);
    // Another program deleted the bans.
    if (ended.empty() &&
        myConnection.SQLExecute("DELETE FROM ban_ends WHERE " + std::string(kHasEnded),
                                {StoredUtc(now)})) {
      ReadNextEnd();
    }
  }
  return ended;
}

void Bans::ReadNextEnd() {
  const auto next = myConnection.SQLSelect(
      "SELECT until FROM ban_ends WHERE until LIKE '____-__-__ __:__:__' ORDER BY until LIMIT 1");
  myNextEnd = next ? UtcFromStored(next->Text("until")) : QDateTime();
  WaitForEnds();
}

void Bans::WaitForEnds() {
  myNextRangeEnd = myRanges.NextEnd();
  QDateTime next = myNextEnd;
  if (myNextRangeEnd.isValid() && !(next.isValid() && next <= myNextRangeEnd)) {
    next = myNextRangeEnd;
  }
  for (const Ban& ban : myWaiting.All()) {
    if (ban.until.isValid() && !(next.isValid() && next <= ban.until)) next = ban.until;
  }
  if (!next.isValid()) return myEndTimer.stop();
  const std::chrono::milliseconds left(Now().msecsTo(next));
  // The clock may be set meanwhile. An end that is due was tried.
  myEndTimer.start(left.count() > 0 ? std::min(left, kMaxClockPause) : kMaxClockPause);
}

std::optional<Ban> Bans::Find(std::int64_t id) {
  const auto waiting = std::ranges::find(myWaiting.All(), id, &Ban::id);
  if (waiting != myWaiting.All().end()) return *waiting;
  const auto stored = Select("bans.id=?", myWaiting.StoredAs(id));
  if (!stored || stored->empty()) return std::nullopt;
  return stored->front();
}

std::optional<std::vector<Ban>> Bans::Of(const std::string& address) {
  auto bans = Select("address=?", address);
  const auto isOne = [&address](const Ban& ban) { return ban.address == address; };
  if (bans) std::ranges::copy_if(myWaiting.All(), std::back_inserter(*bans), isOne);
  return bans;
}

std::optional<std::vector<Ban>> Bans::Select(const std::string& condition,
                                             const DatabaseValue& value) {
  if (myNextEnd.isValid()) return SelectAll(std::string(kWithEnds) + "WHERE " + condition, {value});
  return SelectAll("SELECT * FROM bans WHERE " + condition, {value});
}

std::optional<std::vector<Ban>> Bans::SelectAll(std::string_view query,
                                                const DatabaseConnection::Values& values) {
  auto rows = myConnection.SQLSelect(query, values);
  if (!rows) return std::nullopt;
  std::vector<Ban> bans;
  bans.reserve(rows->RecordCount());
  for (; !rows->EndOfRows(); rows->MoveNext()) {
    bans.push_back({rows->Integer("id"), rows->Text("address"), rows->Text("by"),
                    rows->Text("reason"), rows->Date("bandate"), rows->Text("network"),
                    UtcFromStored(rows->Text("until"))});
  }
  return bans;
}

bool Bans::Lift(const std::vector<std::int64_t>& ids) {
  std::set<std::int64_t> stored(ids.begin(), ids.end());
  if (!myWaiting.Remove(stored)) {
    return myConnection.ReportFault("the file of waiting bans could not be written");
  }
  if (stored.empty()) return true;
  const auto lift = [this](std::int64_t id) {
    return myConnection.SQLExecute("DELETE FROM bans WHERE id=?", {myWaiting.StoredAs(id)});
  };
  const bool areLifted = myConnection.Begin() && std::ranges::all_of(stored, lift);
  const auto forgetEnd = [this](std::int64_t id) {
    return myConnection.SQLExecute("DELETE FROM ban_ends WHERE banid=?", {myWaiting.StoredAs(id)});
  };
  if (areLifted && myNextEnd.isValid()) std::ignore = std::ranges::all_of(stored, forgetEnd);
  const bool isDone = myConnection.Commit() && areLifted;
  if (isDone && myNextEnd.isValid()) ReadNextEnd();
  return isDone;
}

void Bans::Retry() {
  const bool isRefused = !StoreFor(kRetryTime);
  myPause = isRefused ? std::min(myPause * 2, kMaxPause) : kFirstPause;
  myWaiting.TidyFile();
  if (!myWaiting.All().empty()) myRetry.start(myPause);
}

bool Bans::StoreFor(std::chrono::milliseconds time) {
  const Clock::time_point end = Clock::now() + time;
  while (!myWaiting.All().empty() && Clock::now() < end) {
    const auto id = Store(myWaiting.All().front());
    if (!id) {
      // The fault may concern this ban only.
      myWaiting.FirstIsRefused();
      return false;
    }
    myWaiting.FirstIsStored(*id);
  }
  return true;
}

}  // namespace corvane
