#include "server/admin_commands.h"

#include <algorithm>
#include <tuple>

#include "framework/numbers.h"
#include "framework/text.h"
#include "platform/processor_time.h"
#include "server/ban_list.h"
#include "server/client_socket.h"
#include "server/map_socket.h"
#include "server/wire.h"

namespace corvane {
namespace {

using Duration = PollLoop::Clock::duration;

// A question that costs less delays only the questions of its session.
constexpr std::chrono::microseconds kCheapQuestion{250};
constexpr std::chrono::nanoseconds kUntilOthersWereServed{1};
constexpr double kMaxExact = 9'007'199'254'740'992;

bool IsCommand(std::int32_t command) {
  return command >= wire::kAdminKick && command <= wire::kAdminLiftBan;
}

}  // namespace

AdminCommands::AdminCommands(ClientSocket& session, SessionContext& context,
                             ConnectionMemory& memory)
    : mySession(session), myContext(context), myMemory(memory) {}

AdminCommands::~AdminCommands() = default;

bool AdminCommands::IsAdmin() {
  bool answer = false;
  const auto ask = [&] { answer = Ask(AdminsTable::kMaxTime); };
  if (IsNameCode()) {
    Charged(ask);
  } else {
    ask();
  }
  return answer;
}

bool AdminCommands::Ask(std::chrono::nanoseconds time) const {
  return myContext.admins.IsAdmin(mySession.Username(), mySession.NetworkName(),
                                  mySession.RemoteAddress(), time);
}

bool AdminCommands::IsNameCode() const {
  return myContext.rules.statementValues == StatementValues::Pasted &&
         mySession.Username().find('\'') != std::string::npos;
}

Duration AdminCommands::MustWait(std::int32_t command) {
  if (command != wire::kIsAdmin && !IsCommand(command)) return {};
  if (myBanList == nullptr) {
    const Duration wait = QuestionWait();
    if (wait > Duration::zero() || command != wire::kAdminListBans) return wait;
  }
  return ListWait();
}

Duration AdminCommands::QuestionWait() {
  const Duration own = myGate.Wait();
  if (own > Duration::zero() || !IsNameCode()) return own;
  // Most names with a quote are harmless. Those that make the question costly share a gate.
  if (!myIsQuestionCostly) {
    myIsQuestionCostly = Charged([this] { Ask(kCheapQuestion); }) >= kCheapQuestion;
  }
  return myIsQuestionCostly ? myContext.costlyQuestions.Wait() : Duration::zero();
}

Duration AdminCommands::ListWait() {
  if (myBanList == nullptr) {
    if (!IsAdmin()) return {};
    BeginBanList();
  }
  bool hasMore = false;
  Charged([&] { hasMore = myBanList->ReadOn(); });
  return hasMore ? kUntilOthersWereServed : Duration::zero();
}

template <typename Work>
std::chrono::nanoseconds AdminCommands::Charged(const Work& work) {
  const auto begin = ProcessorTime();
  work();
  const auto cost = ProcessorTime() - begin;
  myGate.Charge(cost);
  myContext.costlyQuestions.Charge(cost);
  return cost;
}

void AdminCommands::Handle(std::int32_t command, std::string_view data) {
  if (!IsCommand(command)) return;
  if (IsAdmin()) CarryOut(command, data);
  myBanList.reset();
}

void AdminCommands::CarryOut(std::int32_t command, std::string_view data) {
  Note(command, data);
  MapSocket& listener = mySession.myParent;
  const auto field = [data](std::size_t number) {
    return std::string(NthField(data, '|', number));
  };
  switch (command) {
    case wire::kAdminKick:
      return listener.KickUser(field(1), field(2), mySession.NetworkName());
    case wire::kAdminBan:
      return listener.BanUser(mySession, field(1), field(2));
    case wire::kAdminMessage:
      return listener.BroadcastMessage(std::string(data), mySession.NetworkName());
    case wire::kAdminListBans:
      return SendBans();
    default:
      Charged([&] { LiftBan(data); });
  }
}

void AdminCommands::Note(std::int32_t command, std::string_view data) const {
  if (command == wire::kAdminListBans) return;  // changes nothing
  constexpr std::string_view kNames[] = {"kick ", "ban ", "message ", "", "lift ban "};
  const std::string_view name = kNames[command - wire::kAdminKick];
  const auto& audited = mySession.myParent.Audited;
  if (!audited) return;
  audited(LogLine({"administrator ", Quoted(mySession.Username()), " of ",
                   Quoted(mySession.myNetwork->NetworkName), " (", mySession.RemoteAddress(),
                   "): ", name, data}));
}

void AdminCommands::BeginBanList() {
  myBanList = std::make_unique<BanList>(
      myContext.bans, myMemory, myContext.rules.areAllBansShown ? nullptr : mySession.myNetwork);
}

void AdminCommands::SendBans() {
  if (myBanList == nullptr) BeginBanList();
  // Nothing is left to read if the message had to wait for the list.
  while (myBanList->ReadOn()) {
  }
  const auto payload = myBanList->Take();
  if (!payload) return mySession.FailForMemory();
  mySession.SendMessage(wire::kAdminListBans, *payload);
}

void AdminCommands::LiftBan(std::string_view id) {
  if (!IsNumeric(id)) return;
  // Ban numbers are whole and exact in a double.
  const double number = NumberFromText(id);
  const auto whole = static_cast<std::int64_t>(std::clamp(number, -kMaxExact, kMaxExact));
  if (static_cast<double>(whole) != number) return;
  if (!myContext.rules.areAllBansShown) {
    const auto ban = myContext.bans.Find(whole);
    if (!ban || !IsOfAdmins(*ban, *mySession.myNetwork)) return;
  }
  // The command has no answer, whether it worked or not.
  if (!myContext.bans.Lift({whole})) return;
  myContext.events.Raise({.kind = ServerEvent::Kind::Lifted,
                          .network = mySession.NetworkName(),
                          .by = mySession.Username(),
                          .text = id});
}

}  // namespace corvane
