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

// A simulated player or a stranger, with one connection at a time. The ClientPool that connects it
// owns its descriptor and changes its state.
class Client {
 public:
  enum class State {
    Offline,
    Queued,      // waiting to connect
    Connecting,  // TCP
    Greeting,    // waiting for the server's first message
    LoggingIn,
    Online,
    Leaving  // has asked to leave; waiting for the answer
  };

  // A client without a login is online as soon as the server has greeted it.
  Client(Member member, std::optional<client::Login> login)
      : myMember(member), myLogin(std::move(login)) {}

  State CurrentState() const { return myState; }
  Member Identity() const { return myMember; }
  const std::string& UserName() const { return myLogin->Details().userName; }
  // On all connections so far.
  std::uint64_t BytesSent() const { return myBytesSent; }
  // Number of Idle events that were handled on this connection.
  std::size_t Turn() const { return myTurn; }

  // For handlers of ClientEvents::Idle.
  void Send(std::string_view bytes) { myOutput.append(bytes); }
  // Sends `bytes` bytes of the repeated block, after the bytes given to Send. Borrows the block, so
  // that large output needs no memory.
  void SendFiller(std::string_view block, std::size_t bytes) {
    myBlock = block;
    myBlockPlace = 0;
    myFillerBytes = bytes;
  }
  // Postpones the next Idle event until then; for an offline client, the next connect.
  void RestUntil(Clock::time_point time) { myRest = time; }
  void Hold() { RestUntil(Clock::time_point::max()); }
  // Resets the connection and connects again.
  void HangUp() { myIsHangingUp = true; }

 private:
  friend class ClientPool;

  bool HasOutput() const { return !myOutput.empty() || myFillerBytes > 0; }
  bool IsIdle() const { return myState == State::Online && !HasOutput() && !myDeadline; }
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
  std::optional<std::size_t> mySource;  // number of its source address
  std::uint32_t myInterest = 0;         // epoll events that are registered
  client::FrameCutter myCutter;
  std::string myOutput;
  std::size_t myOutputPlace = 0;
  std::string_view myBlock;
  std::size_t myBlockPlace = 0;
  std::size_t myFillerBytes = 0;
  std::uint64_t myBytesSent = 0;
  std::size_t myTurn = 0;
  bool myIsHangingUp = false;
  bool myIsDirty = false;  // on the pool's list of clients to write
  std::optional<Clock::time_point> myRest;
  // When the pool stops waiting for the server, or the rest ends.
  std::optional<Clock::time_point> myDeadline;
};

}  // namespace corvane::swarm
