#include "client/login.h"

#include <utility>

#include "client/wire.h"

namespace corvane::client {

Login::Login(Account account) : myAccount(std::move(account)) {}

Login::State Login::Receive(std::int32_t command, std::string_view payload, std::string& output) {
  if (command == command::kBanned) return Refuse(Ending::Cause::AddressBanned, payload);
  if (command != myAwaited) return State::Waiting;

  const bool isGreeting = command == command::kNetworkName;
  if (!isGreeting && payload == "FAIL") {
    switch (command - 1) {
      case command::kNetworkName:
        return Refuse(Ending::Cause::NetworkRefused, {});
      case command::kPassword:
        return Refuse(Ending::Cause::PasswordRefused, {});
      default:
        return Refuse(Ending::Cause::UserNameRefused, {});
    }
  }
  if (payload != (isGreeting ? "Network" : "OK"))
    return Refuse(Ending::Cause::Malformed, "an answer to the log-in that is none");

  ++myAwaited;
  switch (command) {
    case command::kNetworkName:
      AppendFrame(output, command::kNetworkName, myAccount.network);
      return State::Waiting;
    case command::kPassword:
      AppendFrame(output, command::kPassword, myAccount.passwordDigest);
      return State::Waiting;
    case command::kUserName:
      AppendFrame(output, command::kUserName, myAccount.userName);
      return State::Waiting;
    default:
      return State::LoggedIn;
  }
}

Login::State Login::Refuse(Ending::Cause cause, std::string_view text) {
  myRefusal = {cause, std::string(text)};
  return State::Refused;
}

}  // namespace corvane::client
