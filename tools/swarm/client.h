#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "client/login.h"
#include "client/wire.h"
#include "tools/swarm/delivery_book.h"

namespace corvane::swarm {

using Clock = std::chrono::steady_clock;

// One simulated player's connection, or a stranger's. Made once and used for one connection after
// another; the pool that connects it owns its descriptor and moves it from state to state.
class Client {
 public:
  enum class State {
    Offline,
    Queued,      // waits for its turn to connect
    Connecting,  // TCP
    Greeting,    // waits for the server's first message
    LoggingIn,
    Online,
    Leaving  // has asked to leave and waits for the answer
  };

  // Without a log-in it is online once it is greeted.
  Client(Member member, std::optional<client::Login> login)
      : myMember(member), myLogin(std::move(login)) {}

  State CurrentState() const { return myState; }
  Member Identity() const { return myMember; }
  const std::string& UserName() const { return myLogin->Details().userName; }
  // On all its connections.
  std::uint64_t BytesSent() const { return myBytesSent; }
  // How often it was idle on this connection before.
  std::size_t Turn() const { return myTurn; }

  // For ClientEvents::Idle: what it does next.
  void Send(std::string_view bytes) { myOutput.append(bytes); }
  // Sends, after what Send was given, so many bytes of a block that is repeated and that outlives
  // the connection: much can be sent without being held.
  void SendFiller(std::string_view block, std::size_t bytes) {
    myBlock = block;
    myBlockPlace = 0;
    myFillerBytes = bytes;
  }
  // Is not idle until then, or, offline, is not connected.
  void RestUntil(Clock::time_point time) { myRest = time; }
  void Hold() { RestUntil(Clock::time_point::max()); }
  // Ends the connection without a word and connects again.
  void HangUp() { myIsHangingUp = true; }

 private:
  friend class ClientPool;

  bool HasOutput() const { return !myOutput.empty() || myFillerBytes > 0; }
  bool IsIdle() const { return myState == State::Online && !HasOutput() && !myDeadline; }
  // What to send next.
  std::string_view Piece() const {
    if (!myOutput.empty()) return std::string_view(myOutput).substr(myOutputPlace);
    return myBlock.substr(myBlockPlace, std::min(myFillerBytes, myBlock.size() - myBlockPlace));
  }
  void Consume(std::size_t count) {
    myBytesSent += count;
    if (myOutput.empty()) {
      myFillerBytes -= count;
      myBlockPlace = (myBlockPlace + count) % myBlock.size();
    } else if ((myOutputPlace += count) == myOutput.size()) {
      ClearOutput();
    }
  }
  void ClearOutput() {
    myOutput.clear();
    myOutputPlace = 0;
  }

  Member myMember;
  std::optional<client::Login> myLogin;
  State myState = State::Offline;
  int myDescriptor = -1;
  std::optional<std::size_t> mySource;  // which of the pool's addresses it connects from
  std::uint32_t myInterest = 0;         // what the pool watches the descriptor for
  client::FrameCutter myCutter;
  std::string myOutput;
  std::size_t myOutputPlace = 0;
  std::string_view myBlock;
  std::size_t myBlockPlace = 0;
  std::size_t myFillerBytes = 0;
  std::uint64_t myBytesSent = 0;
  std::size_t myTurn = 0;
  bool myIsHangingUp = false;
  bool myIsDirty = false;  // on the pool's list of clients with something to do
  std::optional<Clock::time_point> myRest;
  // When the pool gives up waiting for the server, or ends its rest.
  std::optional<Clock::time_point> myDeadline;
};

}  // namespace corvane::swarm
