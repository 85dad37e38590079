#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include <QTimer>

#include "net/connection_memory.h"
#include "net/delayed_calls.h"
#include "net/poller.h"
#include "net/streams.h"
#include "net/traffic.h"
#include "net/watch_list.h"

namespace corvane {

class SocketCore;
class TCPSocket;

// Runs all sockets of the program inside Qt's event loop, one pass at a time: it asks which
// sockets are ready, runs the event pass of each, lets every connection with queued messages
// deliver one of them, and, when nothing is left to do or the slice is over, flushes what was
// written. Passes repeat while there is work, for a slice of a few milliseconds; then Qt gets its
// turn, and the next slice goes on where this one stopped. Needs a QCoreApplication. Outlives every
// socket that was made with it.
//
// Re-entrancy: no pass runs inside another, except the single nested step of GiveWay and of
// WaitUntil. Handlers must not run a nested Qt event loop.
class PollLoop {
 public:
  using Clock = std::chrono::steady_clock;

  // `unhandled` is called inside the catch block of an error that no handler caught.
  explicit PollLoop(std::function<void()> unhandled, const ConnectionMemory::Limits& limits = {});
  ~PollLoop();
  PollLoop(const PollLoop&) = delete;
  PollLoop& operator=(const PollLoop&) = delete;

  // To be called once per element by a loop over connections. Once such a loop has run for 2 ms,
  // runs what is pending on the other sockets; otherwise, and inside such a step, does nothing.
  void GiveWay();

  // Serves all sockets but those whose handlers are on the stack until `done` returns true (asked
  // after every pass) or the deadline has passed.
  void WaitUntil(const std::function<bool()>& done, Clock::time_point deadline);

  // Ends it all, for good: no pass runs any more, what is written goes on being sent as long as
  // peers take it, for two seconds at most, and all connections and listeners are closed. No event
  // tells of it.
  void Finish();

  // Calls the function once: before the next flush, before the next write to any connection, or
  // before one takes nothing more, whichever comes first. It writes what was gathered for many
  // peers, so that each gets the same bytes in the same order as if nothing had been gathered. One
  // function waits at a time: a second request runs the first.
  void CallBeforeFlush(std::function<void()> function);
  // Runs the function that waits, if there is one. What it borrows has it run before it goes.
  void RunBeforeFlush() {
    if (myBeforeFlush) std::exchange(myBeforeFlush, nullptr)();
  }
  // Calls the function after the delay, from Qt's loop, unless the owner is gone by then.
  void CallLater(Clock::duration delay, const std::weak_ptr<void>& owner,
                 std::function<void()> function);

  ConnectionMemory& Memory() { return myMemory; }
  Traffic& Counted() { return myTraffic; }

  // For the sockets.
  int Watch(SocketCore& socket);
  void Unwatch(SocketCore& socket);
  void RequestPass(SocketCore& socket);
  void RequestDispatch(std::shared_ptr<_Pollable> pollable);
  void RequestFlush(const std::shared_ptr<TCPSocket>& socket);
  // Memory to receive into; its content is anybody's as soon as other code runs.
  std::span<char> Scratch() { return myScratch; }

 private:
  void Stop();
  void RunSlice();
  void ScheduleSlice();
  // These return whether there was anything to do.
  bool RunPass(Clock::time_point end);
  bool RunEventPasses(std::deque<std::shared_ptr<SocketCore>>& pending, Clock::time_point end);
  bool DispatchMessages(Clock::time_point end);
  bool NestedStep();
  // Sends what was written, until the time at the latest.
  void Flush(Clock::time_point end);
  void CollectReady(std::chrono::milliseconds patience);
  bool HasWork() const {
    return !myPending.empty() || !myEnding.empty() || !myQueued.empty() || !myUnsent.empty() ||
           myBeforeFlush != nullptr;
  }
  void SendRest();

  std::function<void()> myUnhandled;
  Poller myPoller;
  WatchList myWatched;
  ConnectionMemory myMemory;
  QTimer mySliceTimer;
  DelayedCalls myDelayedCalls;
  std::vector<char> myScratch;
  Traffic myTraffic;

  std::deque<std::shared_ptr<SocketCore>> myPending;
  std::deque<std::shared_ptr<SocketCore>> myEnding;  // the same for those whose peer has ended
  std::deque<std::shared_ptr<_Pollable>> myQueued;
  std::function<void()> myBeforeFlush;
  std::deque<std::shared_ptr<TCPSocket>> myUnsent;  // written to since their last send

  std::optional<Clock::time_point> myHandlerStart;  // once it is known to be long
  unsigned myGiveWayCount = 0;
  bool myIsNested = false;
  bool myIsInSlice = false;
  bool myIsStopped = false;
};

}  // namespace corvane
