#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::swarm {

// The three steps by which a client gets into a network: network name, password digest, user name,
// each asked for by the server and answered "OK" or "FAIL".
class Login {
 public:
  enum class State { Waiting, LoggedIn, Refused };

  // `passwordDigest` is the MD5 digest (RFC 1321) of the network's password, 16 bytes.
  Login(std::string network, std::string passwordDigest, std::string userName);

  // Takes one message from the server and appends to the output what is to be sent next.
  State Receive(std::int32_t command, std::string_view payload, std::string& output);

  // What the server refused, after Refused; for a person to read.
  const std::string& Refusal() const { return myRefusal; }
  const std::string& UserName() const { return myUserName; }

  // Begins anew, for another connection.
  void Restart() { myAwaited = 1; }

 private:
  std::string myNetwork;
  std::string myPasswordDigest;
  std::string myUserName;
  std::string myRefusal;
  std::int32_t myAwaited = 1;
};

}  // namespace corvane::swarm
