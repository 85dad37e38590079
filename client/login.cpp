#include "client/login.h"

#include <utility>

#include "client/wire.h"

namespace corvane::client {

Login::Login(Account account) : myAccount(std::move(account)) {}

Login::State Login::Receive(std::int32_t command, std::string_view payload, std::string& output) {
  if (command == command::kBanned) return Refuse(Ending::Cause::AddressBanned, payload);
  if (command != myAwaited) return State::Waiting;

  // Indexed by command. Each message answers one step and asks for the next.
  struct Step {
    std::string_view expected;
    Ending::Cause failure;
    const std::string* reply;
  };
  const Step steps[] = {
      {"Network", Ending::Cause::Malformed, &myAccount.network},
      {"OK", Ending::Cause::NetworkRefused, &myAccount.passwordDigest},
      {"OK", Ending::Cause::PasswordRefused, &myAccount.userName},
      {"OK", Ending::Cause::UserNameRefused, nullptr},
  };
  const Step& step = steps[command - command::kNetworkName];
  if (payload == "FAIL" && step.failure != Ending::Cause::Malformed)
    return Refuse(step.failure, {});
  if (payload != step.expected)
    return Refuse(Ending::Cause::Malformed, "an invalid answer to the login");
  if (step.reply == nullptr) return State::LoggedIn;
  ++myAwaited;
  AppendFrame(output, command, *step.reply);
  return State::Waiting;
}

Login::State Login::Refuse(Ending::Cause cause, std::string_view text) {
  myRefusal = {cause, std::string(text)};
  return State::Refused;
}

}  // namespace corvane::client
