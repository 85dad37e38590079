#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "client/login.h"
#include "client/report.h"
#include "client/wire.h"
#include "tools/swarm/delivery_book.h"

namespace corvane::swarm {

using Clock = std::chrono::steady_clock;

// One simulated player's connection. Made once and used for one connection after another; the
// pool that connects it owns its descriptor and moves it from state to state.
class Client {
 public:
  enum class State {
    Offline,
    Queued,      // waits for its turn to connect
    Connecting,  // TCP
    LoggingIn,
    Online,
    Leaving  // has asked to leave and waits for the answer
  };

  Client(Member member, client::Login login) : myMember(member), myLogin(std::move(login)) {}

  State CurrentState() const { return myState; }
  Member Identity() const { return myMember; }
  const std::string& UserName() const { return myLogin.Details().userName; }

 private:
  friend class ClientPool;

  Member myMember;
  client::Login myLogin;
  State myState = State::Offline;
  int myDescriptor = -1;
  client::FrameCutter myCutter;
  std::string myOutput;
  bool myIsGreeted = false;        // the server has taken the connection from its queue
  bool myIsDirty = false;          // on the pool's list of clients with something to write
  bool myWaitsForRoom = false;     // the socket took only a part: write again when it has room
  Clock::time_point myPatience{};  // when connecting or leaving: give up then
};

}  // namespace corvane::swarm
