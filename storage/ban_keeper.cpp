#include "storage/ban_keeper.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace corvane {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kFirstPause(100);
constexpr std::chrono::milliseconds kLongestPause(10'000);
constexpr std::chrono::milliseconds kTimeOfARetry(20);
constexpr std::chrono::milliseconds kTimeAtTheEnd(1000);
constexpr std::chrono::milliseconds kPauseAtTheEnd(10);
// While more than that waits, the file keeps what is stored already, and a kill has it stored
// twice.
constexpr std::size_t kMostRewritten = std::size_t{64} << 10;  // bytes
// An administrator of a network can issue bans as fast as he likes, with reasons as long as he
// likes.
constexpr std::size_t kMostWaiting = std::size_t{16} << 20;  // bytes

std::size_t SizeOf(const BansTable::Ban& ban) {
  return sizeof(ban) + ban.address.size() + ban.by.size() + ban.reason.size() + ban.network.size();
}

}  // namespace

BanKeeper::BanKeeper(BansTable& bans)
    : myBans(bans), myFile(bans.DatabaseFile()), myWaiting(myFile.Read()), myPause(kFirstPause) {
  myRetry.setSingleShot(true);
  QObject::connect(&myRetry, &QTimer::timeout, [this] { Retry(); });
  for (const BansTable::Ban& ban : myWaiting)
    myWaitingBytes += SizeOf(ban);
  if (!myWaiting.empty()) Retry();
}

BanKeeper::~BanKeeper() {
  if (myWaiting.empty()) return;
  const Clock::time_point end = Clock::now() + kTimeAtTheEnd;
  while (!StoreFor(kTimeAtTheEnd) && Clock::now() < end)
    std::this_thread::sleep_for(kPauseAtTheEnd);
  if (myFile.Replace(myWaiting) || myIsFileWhole) return;
  myBans.Tell("bans that could not be stored and are lost: " + std::to_string(myWaiting.size()));
}

bool BanKeeper::Add(const std::string& address, const std::string& by, const std::string& reason,
                    const std::string& network) {
  BansTable::Ban ban{0, address, by, reason, QDateTime::currentDateTime(), network};
  if (myBans.Add(ban)) return true;
  Keep(std::move(ban));
  return false;
}

bool BanKeeper::IsBanned(const std::string& address) {
  return IsWaiting(address) || myBans.IsBanned(address);
}

bool BanKeeper::IsWaiting(const std::string& address) const {
  return std::ranges::any_of(
      myWaiting, [&address](const BansTable::Ban& ban) { return ban.address == address; });
}

void BanKeeper::Keep(BansTable::Ban ban) {
  if (myWaitingBytes + SizeOf(ban) > kMostWaiting) {
    // The address is what counts, and there are no more of them than clients.
    if (IsWaiting(ban.address)) return;
    ban.reason.clear();
  }
  myWaitingBytes += SizeOf(ban);
  myIsFileWhole = myFile.Append(ban) && myIsFileWhole;
  myWaiting.push_back(std::move(ban));
  if (!myRetry.isActive()) myRetry.start(myPause);
}

void BanKeeper::Retry() {
  const std::size_t before = myWaiting.size();
  const bool isRefused = !StoreFor(kTimeOfARetry);
  myPause = isRefused ? std::min(myPause * 2, kLongestPause) : kFirstPause;
  if (myWaiting.size() < before && myWaitingBytes < kMostRewritten) {
    myIsFileWhole = myFile.Replace(myWaiting);
  }
  if (!myWaiting.empty()) myRetry.start(myPause);
}

bool BanKeeper::StoreFor(std::chrono::milliseconds time) {
  const Clock::time_point end = Clock::now() + time;
  while (!myWaiting.empty() && Clock::now() < end) {
    if (!myBans.Add(myWaiting.front())) {
      // What is wrong may be wrong with this one only.
      std::rotate(myWaiting.begin(), myWaiting.begin() + 1, myWaiting.end());
      return false;
    }
    myWaitingBytes -= SizeOf(myWaiting.front());
    myWaiting.pop_front();
  }
  return true;
}

}  // namespace corvane
