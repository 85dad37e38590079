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
  if (mySockets.empty()) mySince = Clock::now();
  mySockets.push_back(socket);
}

void FlushQueue::Flush(Clock::time_point end) {
  const auto now = Clock::now();
  ChooseWhetherToHold(now);
  if (!myIsHolding || now + kTolerance >= mySince + myRule.hold) FlushNow(end);
}

void FlushQueue::FlushNow(Clock::time_point end) {
  while (!mySockets.empty() && Clock::now() < end) {
    const std::shared_ptr<TCPSocket> socket = std::move(mySockets.front());
    mySockets.pop_front();
    const std::size_t before = socket->BytesLeftToSend();
    socket->Flush();
    ++mySends;
    mySentBytes += before - std::min(before, socket->BytesLeftToSend());
  }
}

std::optional<FlushQueue::Clock::time_point> FlushQueue::Due() const {
  if (mySockets.empty()) return std::nullopt;
  return myIsHolding ? mySince + myRule.hold : mySince;
}

void FlushQueue::Drop() {
  // What they end may add others.
  const auto waiting = std::exchange(mySockets, {});
}

void FlushQueue::ChooseWhetherToHold(Clock::time_point now) {
  const auto elapsed = now - myWindowBegin;
  if (elapsed < kWindow) return;
  const double sendsPerSecond =
      static_cast<double>(mySends) / std::chrono::duration<double>(elapsed).count();
  myIsHolding = sendsPerSecond > (myIsHolding ? myRule.calm : myRule.busy) &&
                mySentBytes <= mySends * (myIsHolding ? myRule.large : myRule.small);
  myWindowBegin = now;
  mySends = 0;
  mySentBytes = 0;
}

}  // namespace corvane
