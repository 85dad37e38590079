#include "net/poll_loop.h"

#include <algorithm>

#include <QScopedValueRollback>

#include "net/socket_core.h"
#include "net/tcp_socket.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;

constexpr auto kSlice = 4ms;                          // between two turns of Qt's loop
constexpr auto kHandlerPatience = 2ms;                // before a handler's loop gives way
constexpr unsigned kGiveWayStride = 64;               // elements between two looks at the clock
constexpr unsigned kPollStride = 8;                   // messages between two looks at the clock
constexpr std::chrono::milliseconds kMaxWait = 10ms;  // between two looks at a wait's condition
constexpr std::size_t kScratchBytes = 64 * 1024;
constexpr auto kFinishPatience = 2s;    // for output at the end
constexpr auto kStuckPatience = 500ms;  // the same while peers take nothing

}  // namespace

PollLoop::PollLoop(std::function<void()> unhandled, const ConnectionMemory::Limits& limits)
    : myUnhandled(std::move(unhandled)),
      myPoller([this] { RunSlice(); }),
      myMemory(myWatched, limits),
      myScratch(kScratchBytes) {
  mySliceTimer.setInterval(0);
  mySliceTimer.setSingleShot(true);
  QObject::connect(&mySliceTimer, &QTimer::timeout, [this] { RunSlice(); });
}

PollLoop::~PollLoop() {
  Stop();
  // Drops the last references to sockets while the loop is still complete. Destroying one may put
  // others back on the lists.
  const auto isKept = [](const auto& socket) { return socket->myKeep != nullptr; };
  do {
    for (const std::shared_ptr<SocketCore>& socket : myWatched.All())
      socket->myKeep.reset();
    const auto queued = std::exchange(myQueued, {});
    myBeforeFlush = nullptr;
    const auto unsent = std::exchange(myUnsent, {});
    const auto pending = std::exchange(myPending, {});
    const auto ending = std::exchange(myEnding, {});
  } while (HasWork() || std::ranges::any_of(myWatched.All(), isKept));
}

void PollLoop::Stop() {
  myIsStopped = true;
  mySliceTimer.stop();
  myDelayedCalls.Stop();
  myPoller.Quiet();
}

void PollLoop::ScheduleSlice() {
  if (!myIsInSlice && !myIsStopped && !mySliceTimer.isActive()) mySliceTimer.start();
}

void PollLoop::RunSlice() {
  if (myIsInSlice || myIsStopped) return;
  try {
    const QScopedValueRollback inSlice(myIsInSlice, true);
    const auto end = Clock::now() + kSlice;
    while (RunPass(end) && Clock::now() < end) {
    }
    RunBeforeFlush();
    Flush(Clock::now() + kSlice);
  } catch (...) {
    myUnhandled();
  }
  myHandlerStart.reset();
  if (HasWork()) ScheduleSlice();
}

bool PollLoop::RunPass(Clock::time_point end) {
  if (myIsStopped) return false;
  CollectReady(0ms);
  bool worked = RunEventPasses(myPending, end);
  // Last, since thousands may end at once, each with a network to notify.
  worked = RunEventPasses(myEnding, end) || worked;
  return DispatchMessages(end) || worked;
}

void PollLoop::CollectReady(std::chrono::milliseconds patience) {
  for (const Poller::Ready& ready : myPoller.Wait(patience)) {
    SocketCore* const socket = myWatched.Find(ready.token);
    if (socket == nullptr) continue;  // closed since
    socket->NoteReady(ready);
    RequestPass(*socket);
  }
}

// Both walks take the sockets that are on the list when they begin, one at a time from the front:
// a nested pass, or the next slice, finds the rest in place.

bool PollLoop::RunEventPasses(std::deque<std::shared_ptr<SocketCore>>& pending,
                              Clock::time_point end) {
  bool worked = false;
  for (std::size_t count = pending.size(); count > 0 && !pending.empty(); --count) {
    const std::shared_ptr<SocketCore> socket = std::move(pending.front());
    pending.pop_front();
    if (socket->myIsBusy) {
      pending.push_back(socket);
      continue;
    }
    socket->myAwaitsPass = false;
    myHandlerStart.reset();
    socket->EventPass();
    worked = true;
    if (myIsStopped || Clock::now() >= end) break;
  }
  return worked;
}

bool PollLoop::DispatchMessages(Clock::time_point end) {
  bool worked = false;
  for (std::size_t count = myQueued.size(); count > 0 && !myQueued.empty(); --count) {
    std::shared_ptr<_Pollable> pollable = std::move(myQueued.front());
    myQueued.pop_front();
    myHandlerStart.reset();
    worked = pollable->_Poll() || worked;
    if (pollable->StaysQueued()) myQueued.push_back(std::move(pollable));
    const bool looksAtClock = worked && count % kPollStride == 0;
    if (myIsStopped || (looksAtClock && Clock::now() >= end)) break;
  }
  return worked;
}

void PollLoop::Flush(Clock::time_point end) {
  while (!myUnsent.empty() && Clock::now() < end) {
    const std::shared_ptr<TCPSocket> socket = std::move(myUnsent.front());
    myUnsent.pop_front();
    socket->Flush();
  }
}

void PollLoop::Finish() {
  Stop();
  try {
    RunBeforeFlush();
    SendRest();
    for (const std::shared_ptr<SocketCore>& socket : myWatched.All())
      socket->Finish();
  } catch (const std::bad_alloc&) {
    // The end of the process closes them.
  }
}

void PollLoop::SendRest() {
  const auto connections = myWatched.Connections();
  const auto end = Clock::now() + kFinishPatience;
  auto stuck = Clock::now() + kStuckPatience;
  std::size_t before = 0;
  while (Clock::now() < std::min(end, stuck)) {
    std::size_t left = 0;
    for (const auto& connection : connections) {
      connection->FlushFinally();
      left += connection->BytesLeftToSend();
    }
    if (left == 0) return;
    if (left != std::exchange(before, left)) stuck = Clock::now() + kStuckPatience;
    myPoller.Wait(kMaxWait);
  }
}

void PollLoop::GiveWay() {
  if (++myGiveWayCount % kGiveWayStride != 0 || myIsNested || myIsStopped) return;
  const auto now = Clock::now();
  if (!myHandlerStart) {
    // The clock is read only in handlers that turn out to be long.
    myHandlerStart = now;
  } else if (now - *myHandlerStart >= kHandlerPatience) {
    NestedStep();
    myHandlerStart = Clock::now();
  }
}

bool PollLoop::NestedStep() {
  const QScopedValueRollback nested(myIsNested, true);
  myPasses.End();
  const bool worked = RunPass(Clock::now() + kSlice);
  RunBeforeFlush();
  Flush(Clock::now() + kSlice);
  myPasses.End();
  return worked || !myUnsent.empty();
}

void PollLoop::WaitUntil(const std::function<bool()>& done, Clock::time_point deadline) {
  RunBeforeFlush();
  Flush(deadline);
  while (!myIsStopped && !done()) {
    const auto left = deadline - Clock::now();
    if (left <= Clock::duration::zero()) return;
    // Inside a nested pass no other socket is served, but readiness is still noted.
    if (!myIsNested && NestedStep()) continue;
    const auto patience = std::min<Clock::duration>(left, kMaxWait);
    CollectReady(std::chrono::ceil<std::chrono::milliseconds>(patience));
  }
}

int PollLoop::Watch(SocketCore& socket) {
  socket.myToken = myWatched.Add(socket);
  const int error = myPoller.Add(socket.myHandle, socket.myToken);
  if (error != 0) myWatched.Remove(std::exchange(socket.myToken, 0));
  return error;
}

void PollLoop::Unwatch(SocketCore& socket) {
  if (socket.myToken == 0) return;
  myPoller.Remove(socket.myHandle);
  myWatched.Remove(std::exchange(socket.myToken, 0));
  socket.myKeep.reset();
}

void PollLoop::RequestPass(SocketCore& socket) {
  if (socket.myAwaitsPass) return;
  socket.myAwaitsPass = true;
  (socket.myIsHungUp ? myEnding : myPending).push_back(socket.shared_from_this());
  ScheduleSlice();
}

void PollLoop::RequestDispatch(std::shared_ptr<_Pollable> pollable) {
  myQueued.push_back(std::move(pollable));
  ScheduleSlice();
}

void PollLoop::RequestFlush(const std::shared_ptr<TCPSocket>& socket) {
  myUnsent.push_back(socket);
  ScheduleSlice();
}

void PollLoop::CallBeforeFlush(std::function<void()> function) {
  RunBeforeFlush();
  myBeforeFlush = std::move(function);
  ScheduleSlice();
}

void PollLoop::CallLater(Clock::duration delay, const std::weak_ptr<void>& owner,
                         std::function<void()> function) {
  myDelayedCalls.Add(Clock::now() + delay, owner, std::move(function));
}

}  // namespace corvane
