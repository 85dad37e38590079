#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>

#include "net/poll_loop.h"

namespace corvane {

class ClientSocket;

// Closes sessions that do not log in within the time that the rules allow. All have the same time,
// so the first to begin is the first to expire, and one timer, for that session, is enough.
class LoginDeadlines {
 public:
  // `owner` owns the list; the timer does nothing once it is gone. Without a time there is no
  // deadline.
  LoginDeadlines(PollLoop& loop, SocketCore& owner, std::optional<std::chrono::milliseconds> time)
      : myLoop(loop), myOwner(owner), myTime(time) {}

  // Starts the session's time. Pass the returned number to End before the session is destroyed.
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
  std::map<std::uint64_t, Waiting> myWaiting;  // by number, which grows
  std::uint64_t myLastNumber = 0;
  bool myIsCalled = false;
};

}  // namespace corvane
