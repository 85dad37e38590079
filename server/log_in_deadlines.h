#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>

#include "net/poll_loop.h"

namespace corvane {

class ClientSocket;

// Closes sessions that do not log in within the time that the rules give them. All have the same
// time, so there is one list in the order in which it ends, and one call of the loop's at the first
// of them.
class LogInDeadlines {
 public:
  // `owner` owns the list. No time means for ever: then nothing is kept.
  LogInDeadlines(PollLoop& loop, SocketCore& owner, std::optional<std::chrono::milliseconds> time)
      : myLoop(loop), myOwner(owner), myTime(time) {}

  // The session's time begins. The result is what to end it with, before the session goes.
  std::uint64_t Begin(ClientSocket& session);
  void End(std::uint64_t number) { myWaiting.erase(number); }

 private:
  struct Waiting {
    PollLoop::Clock::time_point end;
    ClientSocket* session;
  };

  void CallAtFirst();
  void CloseDue();

  PollLoop& myLoop;
  SocketCore& myOwner;
  std::optional<std::chrono::milliseconds> myTime;
  std::map<std::uint64_t, Waiting> myWaiting;  // by numbers that grow
  std::uint64_t myLastNumber = 0;
  bool myIsCalled = false;
};

}  // namespace corvane
