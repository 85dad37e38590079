#include "tools/swarm/login.h"

#include <utility>

#include "tools/swarm/wire.h"

namespace corvane::swarm {

Login::Login(std::string network, std::string passwordDigest, std::string userName)
    : myNetwork(std::move(network)),
      myPasswordDigest(std::move(passwordDigest)),
      myUserName(std::move(userName)) {}

Login::State Login::Receive(std::int32_t command, std::string_view payload, std::string& output) {
  if (command == command::kBanned) {
    myRefusal = "this address is banned";
    return State::Refused;
  }
  // A member's news may come before the login is complete.
  if (command != myAwaited) return State::Waiting;

  const bool isGreeting = command == command::kNetworkName;
  if (payload != (isGreeting ? "Network" : "OK")) {
    const std::string answer(payload);
    switch (command - 1) {
      case command::kNetworkName:
        myRefusal = "the network '" + myNetwork + "' was answered '" + answer + "'";
        break;
      case command::kPassword:
        myRefusal = "the password of '" + myNetwork + "' was answered '" + answer + "'";
        break;
      case command::kUserName:
        myRefusal = "the user name '" + myUserName + "' was answered '" + answer + "'";
        break;
      default:
        myRefusal = "the greeting was '" + answer + "'";
        break;
    }
    return State::Refused;
  }
  ++myAwaited;
  switch (command) {
    case command::kNetworkName:
      AppendFrame(output, command::kNetworkName, myNetwork);
      return State::Waiting;
    case command::kPassword:
      AppendFrame(output, command::kPassword, myPasswordDigest);
      return State::Waiting;
    case command::kUserName:
      AppendFrame(output, command::kUserName, myUserName);
      return State::Waiting;
    default:
      return State::LoggedIn;
  }
}

}  // namespace corvane::swarm
