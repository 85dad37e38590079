#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include <QTimer>

#include "buffers/buffer_pool.h"
#include "framework/delayed_calls.h"
#include "framework/streams.h"
#include "net/flush_queue.h"
#include "net/poller.h"
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

  // Bounds of what peers can make us hold, in bytes. A connection with more unsent output than the
  // first fails. Over the others, which count the memory of all connections together, the one that
  // holds most does, and nobody else. What a closed connection still holds is dropped when none of
  // it has moved for as long as `drain`.
  struct MemoryLimits {
    std::size_t connectionOutput = std::size_t{16} << 20;
    std::size_t output = std::size_t{1} << 30;
    std::size_t input = std::size_t{256} << 20;
    std::chrono::milliseconds drain{5'000};
  };

  // What went over all connections since the start.
  struct Traffic {
    std::uint64_t messages = 0;  // that were delivered
    std::uint64_t received = 0;  // bytes
    std::uint64_t sent = 0;
  };

  // `unhandled` is called inside the catch block of an error that no handler caught.
  explicit PollLoop(std::function<void()> unhandled) : PollLoop(std::move(unhandled), {}) {}
  PollLoop(std::function<void()> unhandled, const MemoryLimits& limits,
           const FlushQueue::Rule& flushRule = {});
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

  // For the sockets.
  int Watch(SocketCore& socket);
  void Unwatch(SocketCore& socket);
  // Keeps a watched socket alive until it is watched no more.
  void KeepAlive(const std::shared_ptr<SocketCore>& socket);
  void RequestPass(SocketCore& socket);
  void RequestDispatch(std::shared_ptr<_Pollable> pollable);
  // Calls the function once, before the next flush, unless the owner is gone by then.
  void CallBeforeFlush(const std::weak_ptr<void>& owner, std::function<void()> function);
  void RequestFlush(const std::shared_ptr<TCPSocket>& socket);
  const MemoryLimits& Limits() const { return myLimits; }
  // To be called when a connection may hold more than before: has the one that holds most fail
  // where all together are over the bound.
  void BoundInput();
  void BoundOutput();
  // Whether one message of so many bytes fits into what all together may hold.
  bool HasRoomForOutput(std::size_t bytes) const {
    return myOutputBuffers.InUse() + bytes <= myLimits.output;
  }
  // Calls the function after the delay, from Qt's loop, unless the owner is gone by then.
  void CallLater(Clock::duration delay, const std::weak_ptr<void>& owner,
                 std::function<void()> function);
  BufferPool& InputBuffers() { return myInputBuffers; }
  BufferPool& OutputBuffers() { return myOutputBuffers; }
  Traffic& Counted() { return myTraffic; }
  // Memory to receive into; its content is anybody's as soon as other code runs.
  std::span<char> Scratch() { return myScratch; }
  // Keeps two fill steps of listeners from running at once.
  bool& IsFilling() { return myIsFilling; }

 private:
  void Stop();
  void RunSlice();
  void ScheduleSlice();
  // These return whether there was anything to do.
  bool RunPass(Clock::time_point end);
  bool RunEventPasses(Clock::time_point end);
  bool DispatchMessages(Clock::time_point end);
  bool NestedStep();
  bool RunEventPasses(std::deque<std::shared_ptr<SocketCore>>& pending, Clock::time_point end);
  void RunBeforeFlush();
  void Flush();
  void CollectReady(std::chrono::microseconds patience);
  bool HasWork() const {
    return !myPending.empty() || !myEnding.empty() || !myQueued.empty() || !myBeforeFlush.empty();
  }
  // Sees that what is written and not sent gets its turn, too.
  void ScheduleFlush();
  void SendRest();
  void FailLargest(std::size_t (TCPSocket::*held)() const);
  std::vector<std::shared_ptr<TCPSocket>> Connections() const;

  std::function<void()> myUnhandled;
  MemoryLimits myLimits;
  Poller myPoller;
  QTimer mySliceTimer;
  QTimer myFlushTimer;  // for what is held
  DelayedCalls myDelayedCalls;
  BufferPool myInputBuffers;
  BufferPool myOutputBuffers;
  std::vector<char> myScratch;
  Traffic myTraffic;

  WatchList myWatched;
  std::deque<std::shared_ptr<SocketCore>> myPending;
  std::deque<std::shared_ptr<SocketCore>> myEnding;  // the same for those whose peer has ended
  std::deque<std::shared_ptr<_Pollable>> myQueued;
  std::vector<std::pair<std::weak_ptr<void>, std::function<void()>>> myBeforeFlush;
  FlushQueue myFlushes;

  Clock::time_point myHandlerStart;
  bool myHandlerStartKnown = false;
  unsigned myGiveWayCount = 0;
  bool myIsNested = false;
  bool myIsInSlice = false;
  bool myIsFilling = false;
  bool myIsStopped = false;
};

}  // namespace corvane
