#include "net/poll_loop.h"

#include <algorithm>

#include "net/scoped_flag.h"
#include "net/socket_core.h"
#include "net/tcp_socket.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;

constexpr auto kSlice = 4ms;             // between two turns of Qt's loop
constexpr auto kHandlerPatience = 2ms;   // before a handler's loop gives way
constexpr unsigned kGiveWayStride = 64;  // elements between two looks at the clock
constexpr int kLongestWait = 10;         // milliseconds between two looks at a wait's condition
constexpr std::size_t kScratchBytes = 64 * 1024;

std::uint64_t TokenOf(std::uint32_t index, std::uint32_t generation) {
  return (std::uint64_t{generation} << 32) | index;
}

}  // namespace

PollLoop::PollLoop(std::function<void()> unhandled, OutputLimits limits)
    : myUnhandled(std::move(unhandled)),
      myLimits(limits),
      myPoller([this] { RunSlice(); }),
      myScratch(kScratchBytes) {
  mySliceTimer.setInterval(0);
  mySliceTimer.setSingleShot(true);
  QObject::connect(&mySliceTimer, &QTimer::timeout, [this] { RunSlice(); });
}

PollLoop::~PollLoop() {
  Stop();
  // What the lists keep alive leaves while the loop is still whole.
  for (Slot& slot : mySlots)
    std::exchange(slot.keep, nullptr);
  myQueued.clear();
  myUnflushed.clear();
  myPending.clear();
}

void PollLoop::Stop() {
  myIsStopped = true;
  mySliceTimer.stop();
  myPoller.Quiet();
}

void PollLoop::ScheduleSlice() {
  if (!myIsInSlice && !myIsStopped && !mySliceTimer.isActive()) mySliceTimer.start();
}

void PollLoop::RunSlice() {
  if (myIsInSlice || myIsStopped) return;
  try {
    const ScopedFlag inSlice(myIsInSlice);
    const auto end = Clock::now() + kSlice;
    while (RunPass() && Clock::now() < end) {
    }
    Flush();
  } catch (...) {
    myUnhandled();
  }
  if (HasWork()) ScheduleSlice();
}

bool PollLoop::RunPass() {
  CollectReady(0);
  const bool ranEvents = RunEventPasses();
  const bool ranPolls = RunPolls();
  return ranEvents || ranPolls;
}

void PollLoop::CollectReady(int waitMilliseconds) {
  for (const Poller::Ready& ready : myPoller.Wait(waitMilliseconds)) {
    Slot* slot = SlotOf(ready.token);
    if (slot == nullptr) continue;  // it was closed after the system noted the readiness
    slot->socket->NoteReady(ready);
    RequestPass(*slot->socket);
  }
}

// Both walks take what is on the list when they begin, from the front, and leave the rest where a
// nested step finds it.

bool PollLoop::RunEventPasses() {
  bool worked = false;
  for (std::size_t count = myPending.size(); count > 0 && !myPending.empty(); --count) {
    const std::shared_ptr<SocketCore> socket = std::move(myPending.front());
    myPending.pop_front();
    if (socket->myIsBusy) {
      myPending.push_back(socket);
      continue;
    }
    socket->myAwaitsPass = false;
    myHandlerStartKnown = false;
    socket->EventPass();
    worked = true;
  }
  return worked;
}

bool PollLoop::RunPolls() {
  bool worked = false;
  for (std::size_t count = myQueued.size(); count > 0 && !myQueued.empty(); --count) {
    std::shared_ptr<_Pollable> pollable = std::move(myQueued.front());
    myQueued.pop_front();
    if (pollable->IsDue()) {
      myHandlerStartKnown = false;
      pollable->_Poll();
      worked = true;
    }
    if (pollable->StaysQueued()) myQueued.push_back(std::move(pollable));
  }
  return worked;
}

void PollLoop::Flush() {
  std::vector<std::shared_ptr<TCPSocket>> sockets = std::exchange(myUnflushed, {});
  for (const std::shared_ptr<TCPSocket>& socket : sockets)
    socket->FlushOutput();
  sockets.clear();
  if (myUnflushed.empty()) myUnflushed = std::move(sockets);
}

void PollLoop::GiveWay() {
  if (++myGiveWayCount % kGiveWayStride != 0 || myIsNested || myIsStopped) return;
  const auto now = Clock::now();
  if (!myHandlerStartKnown) {
    // The clock is read only for handlers that turn out to be long.
    myHandlerStart = now;
    myHandlerStartKnown = true;
    return;
  }
  if (now - myHandlerStart < kHandlerPatience) return;
  NestedStep();
  myHandlerStart = Clock::now();
  myHandlerStartKnown = true;
}

bool PollLoop::NestedStep() {
  const ScopedFlag nested(myIsNested);
  const bool worked = RunPass();
  Flush();
  return worked;
}

void PollLoop::WaitUntil(const std::function<bool()>& done, Clock::time_point deadline) {
  Flush();
  while (!done()) {
    const auto left = deadline - Clock::now();
    if (left <= Clock::duration::zero()) return;
    // Inside a nested step nobody else is served, but readiness is still noted.
    if (!myIsNested && !myIsStopped && NestedStep()) continue;
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    CollectReady(static_cast<int>(std::min<decltype(milliseconds)>(milliseconds, kLongestWait)));
  }
}

int PollLoop::Watch(SocketCore& socket) {
  if (myFreeSlots.empty()) {
    myFreeSlots.push_back(static_cast<std::uint32_t>(mySlots.size()));
    mySlots.emplace_back();
  }
  const std::uint32_t index = myFreeSlots.back();
  Slot& slot = mySlots[index];
  ++slot.generation;
  const std::uint64_t token = TokenOf(index, slot.generation);
  const int error = myPoller.Add(socket.myHandle, token);
  if (error != 0) return error;
  myFreeSlots.pop_back();
  slot.socket = &socket;
  socket.myToken = token;
  return 0;
}

void PollLoop::Unwatch(SocketCore& socket) {
  Slot* slot = SlotOf(socket.myToken);
  if (slot == nullptr) return;
  myPoller.Remove(socket.myHandle);
  myFreeSlots.push_back(static_cast<std::uint32_t>(socket.myToken));
  socket.myToken = 0;
  slot->socket = nullptr;
  ++slot->generation;
  // Freed last: it may hold the last reference to the socket.
  const std::shared_ptr<SocketCore> keep = std::exchange(slot->keep, nullptr);
}

void PollLoop::KeepAlive(const std::shared_ptr<SocketCore>& socket) {
  if (Slot* slot = SlotOf(socket->myToken)) slot->keep = socket;
}

PollLoop::Slot* PollLoop::SlotOf(std::uint64_t token) {
  const auto index = static_cast<std::uint32_t>(token);
  const auto generation = static_cast<std::uint32_t>(token >> 32);
  if (index >= mySlots.size()) return nullptr;
  Slot& slot = mySlots[index];
  return slot.socket != nullptr && slot.generation == generation ? &slot : nullptr;
}

void PollLoop::RequestPass(SocketCore& socket) {
  if (socket.myAwaitsPass) return;
  socket.myAwaitsPass = true;
  myPending.push_back(socket.shared_from_this());
  ScheduleSlice();
}

void PollLoop::RequestPoll(std::shared_ptr<_Pollable> pollable) {
  myQueued.push_back(std::move(pollable));
  ScheduleSlice();
}

void PollLoop::RequestFlush(std::shared_ptr<TCPSocket> socket) {
  myUnflushed.push_back(std::move(socket));
  ScheduleSlice();
}

void PollLoop::CountOutput(std::size_t before, std::size_t after) {
  myTotalOutput += after - before;
  if (after > before && myTotalOutput > myLimits.total) FailLargestOutput();
}

void PollLoop::FailLargestOutput() {
  TCPSocket* largest = nullptr;
  for (const Slot& slot : mySlots) {
    auto* socket = dynamic_cast<TCPSocket*>(slot.socket);
    if (socket == nullptr) continue;
    if (largest == nullptr || socket->BytesLeftToSend() > largest->BytesLeftToSend()) {
      largest = socket;
    }
  }
  if (largest != nullptr) largest->FailOutput();
}

void PollLoop::CallLater(std::chrono::milliseconds delay, const std::shared_ptr<SocketCore>& socket,
                         std::function<void()> function) {
  QTimer::singleShot(delay, &mySliceTimer,
                     [weak = std::weak_ptr<SocketCore>(socket), function = std::move(function)] {
                       if (!weak.expired()) function();
                     });
}

}  // namespace corvane
