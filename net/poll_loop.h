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
#include "net/pass_times.h"
#include "net/poller.h"
#include "net/streams.h"
#include "net/traffic_counts.h"
#include "net/watch_list.h"

namespace corvane {

class SocketCore;
class TCPSocket;

// Runs all sockets of the program on one thread, inside Qt's event loop.
//
// A pass asks which sockets are ready, runs the event pass of each, and lets every connection with
// queued messages deliver one. A slice repeats passes while they find work, for 4 ms, then flushes
// output for at most as long. The rest waits for the next slice, after Qt's turn.
//
// Owns the poller, the memory of all connections and the delayed calls; keeps a socket alive only
// while it has work for it. Needs a QCoreApplication, and outlives every socket that was made with
// it.
//
// Re-entrancy: no pass runs inside another, except for the nested one of GiveWay and WaitUntil,
// which is one level deep and leaves out sockets whose handlers are on the stack. Handlers must not
// run a nested Qt event loop.
// Errors: std::bad_alloc ends the connection whose handler threw it. Anything else that a handler
// throws ends the slice and goes to `unhandled`.
class PollLoop {
 public:
  using Clock = std::chrono::steady_clock;

  // `unhandled` is called inside the catch block.
  explicit PollLoop(std::function<void()> unhandled, const ConnectionMemory::Limits& limits = {});
  ~PollLoop();
  PollLoop(const PollLoop&) = delete;
  PollLoop& operator=(const PollLoop&) = delete;

  // Call once per element in a loop over connections. After 2 ms in one handler it runs a nested
  // pass; before, and inside such a pass, it does nothing.
  void GiveWay();

  // Runs nested passes until `done` returns true (asked after each) or the deadline has passed.
  // Flushes output first.
  void WaitUntil(const std::function<bool()>& done, Clock::time_point deadline);

  // Ends the loop for good: no pass runs any more, written bytes are sent while peers take them,
  // for 2 s at most, and all connections and listeners are closed. Raises no event.
  void Finish();

  // Calls the function once: before the next flush, before the next write to any connection or
  // before a connection ends, whichever comes first. A writer that coalesces output for many peers
  // writes it in this function, so each peer still gets its bytes in the original order. Only one
  // function can wait; another call runs the waiting one first. Call RunBeforeFlush before
  // destroying anything that the function borrows.
  void CallBeforeFlush(std::function<void()> function);
  void RunBeforeFlush() {
    if (myBeforeFlush) std::exchange(myBeforeFlush, nullptr)();
  }
  // Calls the function after the delay, from Qt's loop, unless the owner is gone by then.
  void CallLater(Clock::duration delay, const std::weak_ptr<void>& owner,
                 std::function<void()> function);

  ConnectionMemory& Memory() { return myMemory; }
  TrafficCounts& Counts() { return myCounts; }
  PassTimes& Passes() { return myPasses; }

  // The rest is for the sockets.

  // Watch makes the poller report the socket's descriptor; it returns the system's error code, 0
  // for success. Call Unwatch before the descriptor is closed; harmless if it is not watched.
  int Watch(SocketCore& socket);
  void Unwatch(SocketCore& socket);
  // Each puts the socket on a list, which keeps it alive, and schedules a slice. A pollable stays
  // on its list until StaysQueued() returns false; do not request it again before that.
  void RequestPass(SocketCore& socket);
  void RequestDispatch(std::shared_ptr<_Pollable> pollable);
  void RequestFlush(const std::shared_ptr<TCPSocket>& socket);
  // Memory to receive into, shared by all: valid until other code runs.
  std::span<char> Scratch() { return myScratch; }

 private:
  void ScheduleSlice();
  void RunSlice();
  // These stop at the time `end` and return whether there was anything to do.
  bool RunPass(Clock::time_point end);
  bool RunEventPasses(std::deque<std::shared_ptr<SocketCore>>& pending, Clock::time_point end);
  bool DispatchMessages(Clock::time_point end);
  bool NestedStep();
  void CollectReady(std::chrono::milliseconds patience);
  void Flush(Clock::time_point end);
  void Stop();
  // Goes on sending while any peer takes something.
  void SendRest();
  bool HasWork() const {
    return !myPending.empty() || !myEnding.empty() || !myQueued.empty() || !myUnsent.empty() ||
           myBeforeFlush != nullptr;
  }

  std::function<void()> myUnhandled;
  Poller myPoller;
  WatchList myWatched;
  ConnectionMemory myMemory;
  QTimer mySliceTimer;
  DelayedCalls myDelayedCalls;
  std::vector<char> myScratch;
  TrafficCounts myCounts;
  PassTimes myPasses;

  std::deque<std::shared_ptr<SocketCore>> myPending;  // whose event pass is due
  std::deque<std::shared_ptr<SocketCore>> myEnding;   // the same for those whose peer has ended
  std::deque<std::shared_ptr<_Pollable>> myQueued;    // with messages to dispatch
  std::function<void()> myBeforeFlush;
  std::deque<std::shared_ptr<TCPSocket>> myUnsent;  // written to since their last send

  std::optional<Clock::time_point> myHandlerStart;  // of a handler that loops
  unsigned myGiveWayCount = 0;
  bool myIsNested = false;
  bool myIsInSlice = false;
  bool myIsStopped = false;
};

}  // namespace corvane
