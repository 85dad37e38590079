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

namespace corvane::swarm {

using Clock = std::chrono::steady_clock;

// One connection of somebody who means no good. Made once and used for one connection after
// another; a part says what it does, the pool that connects it owns its descriptor.
class Stranger {
 public:
  // Without a log-in it stays outside.
  Stranger(std::size_t index, std::optional<client::Login> login)
      : myIndex(index), myLogin(std::move(login)) {}

  // Among the strangers of its part, from 0 on.
  std::size_t Index() const { return myIndex; }
  // How often it has acted on this connection before.
  std::size_t Turn() const { return myTurn; }

  // Sends the bytes. It acts again when they are on their way.
  void Send(std::string_view bytes) { myOutput.append(bytes); }
  // Sends, behind what Send was given, so many bytes of a block that is repeated and that outlives
  // the connection: much can be sent without being held.
  void SendFiller(std::string_view block, std::size_t bytes) {
    myBlock = block;
    myBlockPlace = 0;
    myFillerBytes = bytes;
  }
  // Does nothing until then; what it was to send before is sent.
  void RestUntil(Clock::time_point time) { myRest = time; }
  // Does nothing any more.
  void Hold() { RestUntil(Clock::time_point::max()); }
  // Ends the connection without a word once all is on its way, and connects anew.
  void HangUp() { myIsHangingUp = true; }

 private:
  friend class StrangerPool;

  enum class State { Offline, Connecting, Greeting, LoggingIn, Acting };

  bool IsGreeted() const { return myState > State::Greeting; }
  bool HasOutput() const { return !myOutput.empty() || myFillerBytes > 0; }
  // What to send next.
  std::string_view Piece() const {
    if (!myOutput.empty()) return std::string_view(myOutput).substr(myOutputPlace);
    return myBlock.substr(myBlockPlace, std::min(myFillerBytes, myBlock.size() - myBlockPlace));
  }
  void Consume(std::size_t count);
  // Offline, with nothing left of the connection before.
  void Clear();

  std::size_t myIndex;
  std::optional<client::Login> myLogin;
  State myState = State::Offline;
  int myDescriptor = -1;
  std::uint32_t myInterest = 0;  // what the pool watches the descriptor for
  std::size_t myTurn = 0;
  bool myIsHangingUp = false;
  std::optional<Clock::time_point> myRest;  // not greeted yet: gives up then
  client::FrameCutter myCutter;             // until it acts
  std::string myOutput;
  std::size_t myOutputPlace = 0;
  std::string_view myBlock;
  std::size_t myBlockPlace = 0;
  std::size_t myFillerBytes = 0;
};

}  // namespace corvane::swarm
