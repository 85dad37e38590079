#include "server/login_deadlines.h"

#include "server/client_socket.h"

namespace corvane {

std::uint64_t LoginDeadlines::Begin(ClientSocket& session) {
  if (!myTime) return 0;
  myWaiting.emplace(++myLastNumber, Waiting{PollLoop::Clock::now() + *myTime, &session});
  CallAtFirst();
  return myLastNumber;
}

void LoginDeadlines::CallAtFirst() {
  if (myIsCalled || myWaiting.empty()) return;
  myIsCalled = true;
  const auto left = myWaiting.begin()->second.end - PollLoop::Clock::now();
  myLoop.CallLater(left, myOwner.weak_from_this(), [this] { CloseDue(); });
}

void LoginDeadlines::CloseDue() {
  myIsCalled = false;
  const auto now = PollLoop::Clock::now();
  while (!myWaiting.empty() && myWaiting.begin()->second.end <= now) {
    ClientSocket* const session = myWaiting.begin()->second.session;
    myWaiting.erase(myWaiting.begin());
    session->Close();
  }
  CallAtFirst();
}

}  // namespace corvane
