#include "server/client_socket.h"

#include <algorithm>
#include <ratio>
#include <utility>

#include <QByteArray>
#include <QCryptographicHash>

#include "framework/numbers.h"
#include "framework/text.h"
#include "framework/visible_text.h"
#include "geo/location_lookup.h"
#include "net/os_socket.h"
#include "net/poll_loop.h"
#include "platform/processor_time.h"
#include "server/map_socket.h"
#include "server/wire.h"

namespace corvane {
namespace {

using Kind = ServerEvent::Kind;

// The delay after a failed step doubles from the first to the longest.
constexpr int kFreeFailures = 10;
constexpr int kDoublings = 6;
constexpr std::chrono::milliseconds kFirstDelay{4};
constexpr std::chrono::milliseconds kMaxDelay{250};
constexpr PollLoop::Clock::duration kNoWait{0};
constexpr std::chrono::milliseconds kReadersDelay{20};
constexpr std::chrono::seconds kMaxReadersDelay{1};
// Commands that a member sent before it hung up are still carried out for this long.
constexpr std::chrono::seconds kMemberGonePatience{60};
constexpr std::size_t kMaxDigestDigits = 32;

// Each report repeats the name, so reports under a long one are delayed by its length.
constexpr std::size_t kLongName = 64 * 1024;
constexpr std::size_t kNameBytesPerMillisecond = 4096;
// The expected cost of one member in a list of members.
constexpr std::chrono::nanoseconds kListMember{400};

const auto programStart = PollLoop::Clock::now();

// Sixtieths of a second since the program started. Wraps after about 414 days.
std::int32_t Ticks() {
  using TickCount = std::chrono::duration<std::int64_t, std::ratio<1, 60>>;
  const auto elapsed = std::chrono::floor<TickCount>(PollLoop::Clock::now() - programStart);
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(elapsed.count()));
}

Kind EndFor(std::int32_t code) {
  if (code == os::kNoBuffers) return Kind::LeftBehind;
  return code == os::kTimedOut ? Kind::LeftSilent : Kind::LeftByItself;
}

}  // namespace

ClientSocket::ClientSocket(PollLoop& loop, MapSocket& parent)
    : EasyTCPSocket(loop),
      myParent(parent),
      myContext(parent.Context),
      myAdminCommands(*this, parent.Context, loop.Memory()) {
  LimitMessages(myContext.rules.maxMessageBeforeLogin);
}

ClientSocket::~ClientSocket() = default;

void ClientSocket::Connected() {
  myState = State::Greeting;
  myPlace = myContext.addresses.Enter(RemoteAddress());
  LimitRateUnlessTrusted(myContext.rules.rateBeforeLogin);
  ReportStatus({RemoteAddress(), ": Client Connection Initiated..."});
  HoldMessages(true);
  GetClientInfo();
}

void ClientSocket::LimitRateUnlessTrusted(const MessageRate& rate) {
  if (!myContext.addresses.IsTrusted(RemoteAddress())) LimitRate(rate);
}

void ClientSocket::GetClientInfo() {
  myLookup = myContext.locations.Find(
      RemoteAddress(),
      {ClientCountry, ClientState, ClientCity, ClientZip, ClientTimeZone, ClientFlag},
      [this](const ClientLocation& location) { Greet(location); });
}

void ClientSocket::Greet(const ClientLocation& location) {
  myLookup.reset();
  ClientCountry = location.country;
  ClientState = location.state;
  ClientCity = location.city;
  ClientZip = location.zip;
  ClientTimeZone = location.timeZone;
  ClientFlag = location.flag;
  if (isBanned()) {
    myState = State::Refused;
    const BanRange* const range = myContext.bans.RangeOf(RemoteAddress());
    const bool hasReason = range != nullptr && !range->reason.empty();
    SendNotice(wire::kBanned, hasReason ? range->reason : wire::kBannedText);
    myContext.events.Raise({.kind = Kind::Banned, .address = RemoteAddress()});
    ReportStatus({RemoteAddress(), ": Client Previously Banned."});
  } else {
    myState = State::WaitingNetwork;
    SendMessage(wire::kNetworkName, "Network");
    myDeadline = myContext.deadlines.Begin(*this);
  }
  HoldMessages(false);
}

void ClientSocket::Error(std::int32_t code) {
  myEnd = EndFor(code);
  ReportStatus({"Client Disconnect: (", std::to_string(code), ") ", Quoted(myUsername)});
  Close();
}

void ClientSocket::Close() {
  // Notifying the network gives way to other sessions, but not to events of this one.
  const auto keep = shared_from_this();
  const auto leaving = BeginHandler();
  Leave();
  EasyTCPSocket::Close();
  // A session that is still sending its backlog counts until it ends.
  if (Handle() == os::kNoSocket) myPlace.reset();
}

void ClientSocket::SendNotice(std::int32_t command, std::string_view text) {
  SendMessage(command, text);
  const auto time = myContext.rules.timeToLeave;
  if (!time || std::exchange(myIsExpectedToLeave, true)) return;
  myLoop.CallLater(*time, weak_from_this(), [this] {
    // A session that has left may still be sending its backlog.
    if (IsConnected()) Close();
  });
}

bool ClientSocket::HearsItsNetwork() const {
  if (myNetwork == nullptr) return false;
  return myState == State::LoggedIn || myContext.rules.isHeardBeforeLogin;
}

void ClientSocket::Abandon() {
  myState = State::Gone;
  myLookup.reset();
  EasyTCPSocket::Close();
}

void ClientSocket::Leave() {
  if (myState == State::Idle || myState == State::Gone) return;
  const bool wasLoggedIn = std::exchange(myState, State::Gone) == State::LoggedIn;
  myContext.deadlines.End(myDeadline);
  myLookup.reset();
  if (wasLoggedIn) {
    myParent.CallUserLoggedOut(*this);
    myContext.events.Raise({myEnd, myUsername, NetworkName(), RemoteAddress()});
  }
  myParent.ClientDisconnect(*this);
  mySeat.Release();
}

void ClientSocket::ReceivedMessage(std::int32_t command, std::string_view data) {
  if (myState == State::Refused) return;
  switch (command) {
    case wire::kNetworkName:
      return ChooseNetwork(data);
    case wire::kPassword:
      return CheckPassword(data);
    case wire::kUserName:
      return TakeName(data);
    case wire::kIsAdmin:
      return SendMessage(wire::kIsAdmin, isAdmin() ? "1" : "0");
    case wire::kBye:
      return SendMessage(wire::kBye, wire::kByeText);
    default:
      break;
  }
  if (myState != State::LoggedIn) return;
  if (command == wire::kReport) return TakeReport(data);
  if (command == wire::kMember) return SendMembers();
  // Ignores unknown commands: deliberate.
  myAdminCommands.Handle(command, data);
}

PollLoop::Clock::duration ClientSocket::MustWait(std::int32_t command) {
  if (command == wire::kReport) return myAwaitsReaders ? ReportWait() : kNoWait;
  if (command == wire::kPassword) return PasswordWait();
  if (myState != State::LoggedIn) return kNoWait;
  return command == wire::kMember ? MembersWait() : myAdminCommands.MustWait(command);
}

PollLoop::Clock::duration ClientSocket::ReportWait() {
  const auto now = PollLoop::Clock::now();
  if (!myMessageTime) myMessageTime = now + kMaxReadersDelay;
  myAwaitsReaders =
      now < *myMessageTime && myNetwork != nullptr && myContext.roster.AreMostBehind(*myNetwork);
  if (myAwaitsReaders) return kReadersDelay;
  myMessageTime.reset();
  return {};
}

PollLoop::Clock::duration ClientSocket::MembersWait() {
  if (!myMessageTime) myMessageTime = myContext.memberLists.Take(ExpectedListCost());
  return UntilMessageTime();
}

PollLoop::Clock::duration ClientSocket::ExpectedListCost() const {
  return kListMember * myContext.roster.MembersOf(*myNetwork)->size();
}

PollLoop::Clock::duration ClientSocket::UntilMessageTime() {
  const auto wait = *myMessageTime - PollLoop::Clock::now();
  if (wait > kNoWait) return wait;
  myMessageTime.reset();
  return kNoWait;
}

PollLoop::Clock::duration ClientSocket::PasswordWait() {
  if (myState != State::WaitingPassword && myState != State::WaitingUserName) return {};
  // The password is checked only after the delay: a client that does not wait learns nothing.
  if (!myMessageTime) {
    myMessageTime = PollLoop::Clock::now() + myContext.addresses.PasswordDelay(RemoteAddress());
  }
  return UntilMessageTime();
}

void ClientSocket::ChooseNetwork(std::string_view name) {
  if (myState == State::LoggedIn) return RefuseNetwork(name, Kind::OutOfTurn);
  if (NetworkRef network = myParent.FindNetwork(name); network != myNetwork) {
    const Roster::Change change(myContext.roster, *this);
    myNetwork = std::move(network);
  }
  const bool hasSeat = mySeat.Take(myNetwork);
  if (!myContext.rules.isSeatTakenBeforePassword) mySeat.Release();
  if (hasSeat) {
    myState = State::WaitingPassword;
    SendMessage(wire::kPassword, wire::kOk);
  } else {
    myState = State::WaitingNetwork;
    RefuseNetwork(name, myNetwork == nullptr ? Kind::UnknownNetwork : Kind::NoSeat);
  }
}

void ClientSocket::CheckPassword(std::string_view digest) {
  if (myState != State::WaitingPassword && myState != State::WaitingUserName) {
    return RefusePassword(Kind::OutOfTurn);
  }
  const bool isRight = IsPasswordDigest(digest);
  if (!isRight) myContext.addresses.NoteWrongPassword(RemoteAddress());
  // A session that has no seat yet, or lost it in an earlier failure, needs one now.
  if (isRight && (mySeat.IsHeld() || mySeat.Take(myNetwork))) {
    myState = State::WaitingUserName;
    SendMessage(wire::kUserName, wire::kOk);
  } else {
    myState = State::WaitingPassword;
    RefusePassword(isRight ? Kind::NoSeat : Kind::WrongPassword);
    mySeat.Release();
  }
}

void ClientSocket::TakeName(std::string_view userName) {
  if (myState != State::WaitingUserName) return RefuseName(userName, Kind::OutOfTurn);
  std::optional<std::string> folded;
  if (MayBeTaken(userName)) folded = FoldText(userName);
  const bool isFree = folded && CanLogin(*folded);
  if (isFree && (mySeat.IsHeld() || mySeat.Take(myNetwork))) {
    myFailedSteps = 0;
    LimitMessages(myContext.rules.maxMessageAfterLogin);
    LimitRateUnlessTrusted(myContext.rules.rateAfterLogin);
    myContext.deadlines.End(myDeadline);
    if (myPlace) myPlace->Login();
    ReportStatus({RemoteAddress(), ": User Logged In (", Quoted(userName), ")"});
    EnterAs(userName, std::move(*folded));
    myParent.CallUserLoggedIn(*this);
    myContext.events.Raise({Kind::Login, myUsername, NetworkName(), RemoteAddress()});
    SendMessage(wire::kReport, wire::kOk);
  } else {
    RefuseName(userName, isFree ? Kind::NoSeat : Kind::WrongName);
    mySeat.Release();
  }
}

bool ClientSocket::MayBeTaken(std::string_view userName) const {
  const Rules& rules = myContext.rules;
  if (userName.size() > rules.maxUserName) return false;
  return rules.mayUserNameMislead || (userName.find('|') == std::string_view::npos &&
                                      VisibleText(userName) == DisplayText(userName));
}

void ClientSocket::RefuseNetwork(std::string_view name, Kind why) {
  Refuse(wire::kPassword, {why, {}, name, RemoteAddress()},
         {RemoteAddress(), ": Network Fail (", Quoted(name), ")"});
}

void ClientSocket::RefusePassword(Kind why) {
  Refuse(wire::kUserName, {why, {}, NetworkName(), RemoteAddress()},
         {RemoteAddress(), ": Login Failed."});
}

void ClientSocket::RefuseName(std::string_view userName, Kind why) {
  Refuse(wire::kReport, {why, userName, NetworkName(), RemoteAddress()},
         {RemoteAddress(), ": Bad Username (", Quoted(userName), ")"});
}

void ClientSocket::Refuse(std::int32_t answer, const ServerEvent& event, StatusParts line) {
  SendMessage(answer, wire::kFail);
  ReportStatus(line);
  myContext.events.Raise(event);
  // The first failed steps cost nothing, so a client that is merely wrong notices nothing.
  const int delays = ++myFailedSteps - kFreeFailures;
  if (delays <= 0) return;
  DelayMessages(delays > kDoublings ? kMaxDelay : kFirstDelay * (1 << (delays - 1)));
}

bool ClientSocket::IsPasswordDigest(std::string_view digest) const {
  if (digest.size() > kMaxDigestDigits * kFoldingFactor) return false;
  const std::string& password = myNetwork->Password;
  const QByteArray expected = QCryptographicHash::hash(
      QByteArrayView(password.data(), static_cast<qsizetype>(password.size())),
      QCryptographicHash::Md5);
  // Raw or in hexadecimal digits, compared without regard to letter case as all texts are.
  return SameText(digest, expected.toStdString()) ||
         SameText(digest, expected.toHex().toStdString());
}

bool ClientSocket::isBanned() const {
  return myContext.bans.IsBanned(RemoteAddress());
}

bool ClientSocket::CanLogin(const std::string& foldedName) const {
  return myContext.roster.IsNameFree(foldedName, *this);
}

bool ClientSocket::isAdmin() {
  return myState == State::LoggedIn && myAdminCommands.IsAdmin();
}

void ClientSocket::TakeReport(std::string_view data) {
  std::string_view rest = data;
  const auto nextField = [&rest] {
    const std::size_t comma = rest.find(',');
    const std::string_view field = rest.substr(0, comma);
    rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    return field;
  };
  LastUpdate = Ticks();
  const std::int32_t x = std::exchange(X, Int32FromText(nextField()));
  const std::int32_t y = std::exchange(Y, Int32FromText(nextField()));
  const std::int32_t facet = std::exchange(Facet, Int32FromText(nextField()));
  const std::int32_t hp = std::exchange(HP, Int32FromText(nextField()));
  InBattle = NumberFromText(nextField()) != 0;
  IsDead = NumberFromText(nextField()) != 0;
  // A change of only the two flags is not relayed until the next movement: deliberate.
  if (x != X || y != Y || facet != Facet || hp != HP) {
    myParent.BroadcastPosition(*this);
    if (myUsername.size() > kLongName) {
      DelayMessages(std::chrono::milliseconds(myUsername.size() / kNameBytesPerMillisecond));
    }
  }
}

void ClientSocket::SendMembers() {
  const auto begin = ProcessorTime();
  const auto members = myContext.roster.MembersOf(*myNetwork);
  for (const std::shared_ptr<ClientSocket>& member : *members) {
    if (member.get() != this && !member->Username().empty()) {
      SendMessage(wire::kMember, wire::MemberRecord(*member));
    }
    myLoop.GiveWay();
  }
  myContext.memberLists.Charge(ProcessorTime() - begin - ExpectedListCost());
}

void ClientSocket::EnterAs(std::string_view userName, std::string folded) {
  const Roster::Change change(myContext.roster, *this);
  myState = State::LoggedIn;
  SetGonePatience(kMemberGonePatience);
  myUsername = userName;
  myFoldedUsername = std::move(folded);
}

void ClientSocket::ReportStatus(StatusParts parts) {
  if (myContext.addresses.AdmitLine(RemoteAddress())) myParent.CallStatusMessage(parts);
}

}  // namespace corvane
