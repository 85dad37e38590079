#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "client/ending.h"

namespace corvane::client {

// The credentials of a client.
struct Account {
  std::string network;
  std::string passwordDigest;  // MD5 (RFC 1321) of the network's password, 16 bytes
  std::string userName;
};

// The client's side of a login: network name, password digest, user name. The server asks for each
// in turn and answers "OK" or "FAIL". Reads messages and writes replies; has no socket and no
// timeout.
class Login {
 public:
  enum class State { Waiting, LoggedIn, Refused };

  explicit Login(Account account);

  // Takes a message from the server and appends the reply, if any, to `output`. Ignores commands
  // other than the current step's, since messages about members may come at any time.
  State Receive(std::int32_t command, std::string_view payload, std::string& output);

  // Valid once Receive has returned Refused.
  const Ending& Refusal() const { return myRefusal; }
  const Account& Details() const { return myAccount; }

  // Starts again, for another connection.
  void Restart() { myAwaited = 1; }

 private:
  State Refuse(Ending::Cause cause, std::string_view text);

  Account myAccount;
  Ending myRefusal;
  std::int32_t myAwaited = 1;
};

}  // namespace corvane::client
