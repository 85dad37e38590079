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

#include "net/buffer_pool.h"
#include "net/flush_queue.h"
#include "net/poller.h"
#include "net/streams.h"
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

  // Bounds of what was written and not sent yet, in bytes. A connection over the first fails; over
  // the second, the connection with the most does.
  struct OutputLimits {
    std::size_t connection = std::size_t{16} << 20;
    std::size_t total = std::size_t{1} << 30;
  };

  // `unhandled` is called inside the catch block of an error that no handler caught.
  explicit PollLoop(std::function<void()> unhandled) : PollLoop(std::move(unhandled), {}) {}
  PollLoop(std::function<void()> unhandled, OutputLimits limits,
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

  // Sends what every connection still holds, as far as the system takes it: before an end.
  void FlushAll();

  // Runs no further pass, for good.
  void Stop();

  // For the sockets.
  int Watch(SocketCore& socket);
  void Unwatch(SocketCore& socket);
  // Keeps a watched socket alive until it is watched no more.
  void KeepAlive(const std::shared_ptr<SocketCore>& socket);
  void RequestPass(SocketCore& socket);
  void RequestPoll(std::shared_ptr<_Pollable> pollable);
  // Asks for a HandOver before the next flush; and has all who asked hand over now.
  void RequestHandOver(const std::shared_ptr<_Gatherer>& gatherer);
  void HandOver();
  void RequestFlush(const std::shared_ptr<TCPSocket>& socket);
  // Counts a change of a connection's unsent output, in bytes.
  void CountOutput(std::size_t before, std::size_t after);
  std::size_t TotalOutput() const { return myTotalOutput; }
  const OutputLimits& Limits() const { return myLimits; }
  // Calls the function after the delay, from Qt's loop, unless the socket is gone by then.
  void CallLater(std::chrono::milliseconds delay, const std::shared_ptr<SocketCore>& socket,
                 std::function<void()> function);
  BufferPool& Buffers() { return myBuffers; }
  FlushQueue& Flushes() { return myFlushes; }
  // Memory to receive into; its content is anybody's as soon as other code runs.
  std::span<char> Scratch() { return myScratch; }
  // Keeps two fill steps of listeners from running at once.
  bool& IsFilling() { return myIsFilling; }

 private:
  void RunSlice();
  void ScheduleSlice();
  // These return whether there was anything to do.
  bool RunPass(Clock::time_point end);
  bool RunEventPasses(Clock::time_point end);
  bool RunPolls(Clock::time_point end);
  bool NestedStep();
  bool RunEventPasses(std::deque<std::shared_ptr<SocketCore>>& pending, Clock::time_point end);
  void Flush();
  void CollectReady(std::chrono::microseconds patience);
  bool HasWork() const {
    return !myPending.empty() || !myEnding.empty() || !myQueued.empty() || !myGatherers.empty();
  }
  // Sees that what is written and not sent gets its turn, too.
  void ScheduleFlush();
  void FailLargestOutput();

  std::function<void()> myUnhandled;
  OutputLimits myLimits;
  Poller myPoller;
  QTimer mySliceTimer;
  QTimer myFlushTimer;  // for what is held
  BufferPool myBuffers;
  std::vector<char> myScratch;

  WatchList myWatched;
  std::deque<std::shared_ptr<SocketCore>> myPending;
  std::deque<std::shared_ptr<SocketCore>> myEnding;  // the same for those whose peer has ended
  std::deque<std::shared_ptr<_Pollable>> myQueued;
  std::vector<std::weak_ptr<_Gatherer>> myGatherers;
  FlushQueue myFlushes;
  std::size_t myTotalOutput = 0;

  Clock::time_point myHandlerStart;
  bool myHandlerStartKnown = false;
  unsigned myGiveWayCount = 0;
  bool myIsNested = false;
  bool myIsInSlice = false;
  bool myIsFilling = false;
  bool myIsStopped = false;
};

}  // namespace corvane
