#include "client/session.h"

#include <optional>
#include <utility>

#include "framework/text.h"

namespace corvane::client {
namespace {

std::string_view Start(std::string_view text) {
  return text.substr(0, Session::kMaxTextBytes);
}

}  // namespace

Session::Session(Account account, Members& members, SessionEvents& events)
    : myLogin(std::move(account)), myMembers(members), myEvents(events) {}

void Session::Receive(std::string_view bytes, Clock::time_point now) {
  if (IsOver()) return;
  const bool isInStep = myCutter.Feed(
      bytes, [&](std::int32_t command, std::string_view payload) { Take(command, payload, now); });
  if (!isInStep) Break("a message of invalid length");
}

std::string Session::TakeOutput() {
  return std::exchange(myOutput, {});
}

void Session::Take(std::int32_t command, std::string_view payload, Clock::time_point now) {
  // These may come before the login is complete.
  switch (command) {
    case command::kMessage:
      if (!IsOver()) myEvents.Said(Start(payload));
      return;
    case command::kKicked:
      return End({Ending::Cause::Kicked, std::string(Start(payload))});
    case command::kBye:
      return End({Ending::Cause::Dismissed, {}});
    default:
      break;
  }
  switch (myState) {
    case State::LoggingIn:
      switch (myLogin.Receive(command, Start(payload), myOutput)) {
        case Login::State::Waiting:
          break;
        case Login::State::Refused:
          End(myLogin.Refusal());
          break;
        case Login::State::LoggedIn:
          myState = State::LoggedIn;
          myEvents.LoggedIn();
          break;
      }
      break;
    case State::LoggedIn:
      TakeLoggedIn(command, payload, now);
      break;
    case State::Over:
      break;
  }
}

void Session::TakeLoggedIn(std::int32_t command, std::string_view payload, Clock::time_point now) {
  switch (command) {
    case command::kMember:
      TakeMember(payload, now);
      break;
    case command::kMemberLeft:
      // The name is empty if the client never logged in.
      myMembers.Remove(payload);
      break;
    case command::kIsAdmin:
      TakeRights(payload);
      break;
    case command::kAdminListBans:
      myEvents.BansListed(ParseBans(payload));
      break;
    case command::kBanned:
      End({Ending::Cause::Banned, std::string(Start(payload))});
      break;
    default:
      // A newer server may send other commands.
      break;
  }
}

void Session::TakeMember(std::string_view payload, Clock::time_point now) {
  const std::optional<MemberRecord> relay = ParseRelay(payload);
  const std::optional<MemberRecord> record = relay ? relay : ParseListed(payload);
  if (!record) {
    Break("an invalid member record");
    return;
  }
  const bool isOwn = record->name.size() <= Members::kMaxNameBytes &&
                     SameText(record->name, myLogin.Details().userName);
  if (isOwn || record->name.empty()) return;
  if (relay) {
    myMembers.TakeRelay(*record, now);
  } else {
    myMembers.TakeListed(*record, now);
  }
}

void Session::TakeRights(std::string_view payload) {
  if (payload != "0" && payload != "1") {
    Break("an invalid answer about rights");
    return;
  }
  if (std::exchange(myAwaitsList, false)) myMembers.EndList();
  myEvents.Listed(payload == "1");
}

void Session::AskForMembers() {
  if (myAwaitsList || !IsLoggedIn()) return;
  myAwaitsList = true;
  myMembers.BeginList();
  Send(command::kMember, {});
  Send(command::kIsAdmin, {});
}

void Session::Send(const Report& report) {
  if (IsLoggedIn()) AppendReport(myOutput, report);
}

void Session::Leave() {
  Send(command::kBye, {});
  End({Ending::Cause::Left, {}});
}

void Session::Send(std::int32_t command, std::string_view payload) {
  if (IsLoggedIn()) AppendFrame(myOutput, command, payload);
}

void Session::Break(const char* what) {
  End({Ending::Cause::Malformed, what});
}

void Session::End(const Ending& ending) {
  if (IsOver()) return;
  myState = State::Over;
  myEvents.Ended(ending);
}

}  // namespace corvane::client
