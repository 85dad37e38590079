#include "storage/bans.h"

#include <algorithm>
#include <set>
#include <thread>
#include <utility>

#include "storage/database_connection.h"

namespace corvane {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kPortion = 16;
constexpr std::chrono::milliseconds kFirstPause(100);
constexpr std::chrono::milliseconds kMaxPause(10'000);
constexpr std::chrono::milliseconds kRetryTime(20);
constexpr std::chrono::milliseconds kEndTime(1000);
constexpr std::chrono::milliseconds kEndPause(10);

}  // namespace

Bans::Bans(DatabaseConnection& connection)
    : myConnection(connection), myWaiting(connection.File()), myPause(kFirstPause) {
  myRetry.setSingleShot(true);
  QObject::connect(&myRetry, &QTimer::timeout, [this] { Retry(); });
  if (!myWaiting.All().empty()) Retry();
}

Bans::~Bans() {
  if (myWaiting.All().empty()) return;
  const Clock::time_point end = Clock::now() + kEndTime;
  while (!StoreFor(kEndTime) && Clock::now() < end)
    std::this_thread::sleep_for(kEndPause);
  if (myWaiting.Save()) return;
  myConnection.Report("bans that could not be stored and are lost: " +
                      std::to_string(myWaiting.All().size()));
}

bool Bans::Add(const std::string& address, const std::string& by, const std::string& reason,
               const std::string& network) {
  Ban ban{0, address, by, reason, QDateTime::currentDateTime(), network};
  if (Store(ban)) return true;
  myWaiting.Add(std::move(ban));
  if (!myRetry.isActive()) myRetry.start(myPause);
  return false;
}

bool Bans::Store(const Ban& ban) {
  DatabaseRecord record;
  record.SetText("address", ban.address);
  record.SetText("by", ban.by);
  record.SetText("reason", ban.reason);
  record.SetDate("bandate", ban.bandate);
  record.SetInteger("banlength", 1);  // nothing reads it: deliberate
  record.SetText("network", ban.network);
  return myConnection.InsertRecord("bans", record) && myConnection.Commit();
}

bool Bans::IsBanned(const std::string& address) {
  // An address has no quotes: pasted into the text it would give the same.
  return myWaiting.Has(address) ||
         myConnection.HasRowWith("SELECT * FROM bans WHERE address=?", {address});
}

std::optional<std::vector<Ban>> Bans::Portion(std::int64_t& place) {
  auto bans = Select("id>? ORDER BY id LIMIT " + std::to_string(kPortion), place);
  place = bans && bans->size() == kPortion ? bans->back().id : kEnd;
  if (bans && place == kEnd) {
    // Together with the last stored ones: a ban that is stored meanwhile would be missed otherwise.
    bans->insert(bans->end(), myWaiting.All().begin(), myWaiting.All().end());
  }
  return bans;
}

std::optional<Ban> Bans::Find(std::int64_t id) {
  const auto waiting = std::ranges::find(myWaiting.All(), id, &Ban::id);
  if (waiting != myWaiting.All().end()) return *waiting;
  const auto stored = Select("id=?", myWaiting.StoredAs(id));
  if (!stored || stored->empty()) return std::nullopt;
  return stored->front();
}

std::optional<std::vector<Ban>> Bans::Select(const std::string& condition, std::int64_t value) {
  auto rows = myConnection.SQLSelect("SELECT * FROM bans WHERE " + condition, {value});
  if (!rows) return std::nullopt;
  std::vector<Ban> bans;
  bans.reserve(rows->RecordCount());
  for (; !rows->EndOfRows(); rows->MoveNext()) {
    bans.push_back({rows->Integer("id"), rows->Text("address"), rows->Text("by"),
                    rows->Text("reason"), rows->Date("bandate"), rows->Text("network")});
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
  return myConnection.Commit() && areLifted;
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
    if (!Store(myWaiting.All().front())) {
      // The fault may concern this ban only.
      myWaiting.FirstIsRefused();
      return false;
    }
    myWaiting.FirstIsStored(myConnection.LastInserted());
  }
  return true;
}

}  // namespace corvane
