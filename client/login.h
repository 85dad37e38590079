#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "client/ending.h"

namespace corvane::client {

// What a client logs in with.
struct Account {
  std::string network;
  std::string passwordDigest;  // MD5 (RFC 1321) of the network's password, 16 bytes
  std::string userName;
};

// The three steps by which a client gets into a network: network name, password digest, user name,
// each asked for by the server and answered "OK" or "FAIL".
class Login {
 public:
  enum class State { Waiting, LoggedIn, Refused };

  explicit Login(Account account);

  // Takes one message from the server and appends to the output what is to be sent next. What is
  // no answer to the current step is ignored: a member's news may come at any time.
  State Receive(std::int32_t command, std::string_view payload, std::string& output);

  // Why it was refused, after Refused.
  const Ending& Refusal() const { return myRefusal; }
  const Account& Details() const { return myAccount; }

  // Begins anew, for another connection.
  void Restart() { myAwaited = 1; }

 private:
  State Refuse(Ending::Cause cause, std::string_view text);

  Account myAccount;
  Ending myRefusal;
  std::int32_t myAwaited = 1;
};

}  // namespace corvane::client
