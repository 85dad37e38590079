#include "net/flush_queue.h"

#include <algorithm>
#include <utility>

#include "net/tcp_socket.h"

namespace corvane {
namespace {

constexpr std::chrono::milliseconds kWindow{100};  // of the count of sends
// Timers come in whole milliseconds: so much too early is in time.
constexpr std::chrono::microseconds kTolerance{500};

}  // namespace

void FlushQueue::Add(const std::shared_ptr<TCPSocket>& socket) {
  Half& half = myHalves[socket->HandOffNumber() % 2];
  if (half.sockets.empty()) half.since = Clock::now();
  half.sockets.push_back(socket);
  myHasNew = true;
}

void FlushQueue::Flush(Clock::time_point end) {
  const auto begin = Clock::now();
  ChooseWhetherToHold(begin);
  if (!myIsHolding) return FlushNow(end);
  if (begin + kTolerance < myPauseEnd) return;
  Half& longer = LongerWaiting();
  const bool isTurn =
      std::exchange(myHasNew, false) || begin + kTolerance - longer.since >= myRule.longestHold;
  if (mySending.empty() && isTurn) std::swap(mySending, longer.sockets);
  Send(end);
  const auto now = Clock::now();
  myPauseEnd = now + std::min<Clock::duration>((now - begin) / 2, myRule.longestHold);
}

void FlushQueue::FlushNow(Clock::time_point end) {
  myHasNew = false;
  while (!IsEmpty() && Clock::now() < end) {
    if (mySending.empty()) std::swap(mySending, LongerWaiting().sockets);
    Send(end);
  }
}

FlushQueue::Half& FlushQueue::LongerWaiting() {
  auto& [one, other] = myHalves;
  if (one.sockets.empty()) return other;
  return other.sockets.empty() || one.since <= other.since ? one : other;
}

void FlushQueue::Send(Clock::time_point end) {
  while (!mySending.empty()) {
    const std::shared_ptr<TCPSocket> socket = std::move(mySending.front());
    mySending.pop_front();
    const std::size_t before = socket->BytesLeftToSend();
    socket->Flush();
    ++mySends;
    mySentBytes += before - std::min(before, socket->BytesLeftToSend());
    if (Clock::now() >= end) return;
  }
}

std::optional<FlushQueue::Clock::time_point> FlushQueue::Due() const {
  if (IsEmpty()) return std::nullopt;
  if (!myIsHolding || !mySending.empty()) return myPauseEnd;
  auto due = Clock::time_point::max();
  for (const Half& half : myHalves) {
    if (!half.sockets.empty()) due = std::min(due, half.since + myRule.longestHold);
  }
  return std::max(due, myPauseEnd);
}

void FlushQueue::Drop() {
  const auto sending = std::exchange(mySending, {});
  for (Half& half : myHalves)
    const auto waiting = std::exchange(half.sockets, {});
}

void FlushQueue::ChooseWhetherToHold(Clock::time_point now) {
  const auto elapsed = now - myWindowBegin;
  if (elapsed < kWindow) return;
  const double sendsPerSecond =
      static_cast<double>(mySends) / std::chrono::duration<double>(elapsed).count();
  myIsHolding = sendsPerSecond > (myIsHolding ? myRule.calm : myRule.busy) &&
                mySentBytes <= mySends * (myIsHolding ? myRule.large : myRule.small);
  if (!myIsHolding) myPauseEnd = now;
  myWindowBegin = now;
  mySends = 0;
  mySentBytes = 0;
}

}  // namespace corvane
