#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <QDateTime>

#include "framework/status_line.h"
#include "net/easy_tcp_socket.h"
#include "server/address_table.h"
#include "server/admin_commands.h"
#include "server/seat.h"
#include "server/server_events.h"
#include "server/server_networks.h"

namespace corvane {

class HttpTransfer;
class MapSocket;
struct ClientLocation;

// The server's session with one client: looks up its location, refuses a banned address, runs the
// three steps of the login, keeps its last report and passes changed ones to its listener, which
// relays them. Owns its seat in the network. Borrows its listener, which calls Abandon before it is
// destroyed.
//
// States: see State. Messages wait in Greeting, which ends in WaitingNetwork or, for a banned
// address, in Refused. Until the login is complete a step may be tried again and decides again; one
// out of turn is answered "FAIL" and changes nothing. Commands 4, 5 and 10 to 14 count only when
// LoggedIn.
//
// A session leaves exactly once, however its connection ends: its logout is raised, its network is
// notified, and its seat is given back.
//
// Re-entrancy: no event of a session is raised while one of its handlers runs. Walks over members
// (to notify them of its leaving, to list them) give way to other sessions.
//
// Limits: those of the rules. From the eleventh failed login step on the next message waits up to
// 250 ms, a report waits up to a second for most of its recipients to read, lists of members take
// turns (Turns), and the cost of administrators' commands delays the next one (AdminCommands).
class ClientSocket : public EasyTCPSocket {
 public:
  enum class State {
    Idle,             // not handed off yet
    Greeting,         // the location is being looked up
    WaitingNetwork,   // command 1 is next
    WaitingPassword,  // command 2 is next
    WaitingUserName,  // command 3 is next
    LoggedIn,
    Refused,  // a banned address: its messages are ignored
    Gone
  };

  ClientSocket(PollLoop& loop, MapSocket& parent);
  ~ClientSocket() override;

  std::shared_ptr<ClientSocket> Self() {
    return std::static_pointer_cast<ClientSocket>(shared_from_this());
  }
  State LoginState() const { return myState; }
  bool HoldsSeat() const { return mySeat.IsHeld(); }

  // The name that it logged in with, also folded for comparing. Empty before the login; kept after
  // the session's end.
  const std::string& Username() const { return myUsername; }
  const std::string& FoldedUsername() const { return myFoldedUsername; }

  // The last report; zeros before the first.
  std::int32_t X = 0;
  std::int32_t Y = 0;
  std::int32_t Facet = 0;
  MapSocket& myParent;
  std::int32_t HP = 0;
  bool InBattle = false;
  std::int32_t LastUpdate = 0;  // in sixtieths of a second since the program started
  bool IsDead = false;

  // The network that login step 1 found last, with or without a seat there; null before that and
  // for an unknown name. Only the session itself changes it.
  NetworkRef myNetwork;

  // Whether it gets the messages that the network's members get.
  bool HearsItsNetwork() const;

  // The network's name; empty if there is none.
  std::string NetworkName() const { return myNetwork ? myNetwork->NetworkName : std::string(); }

  // Part of the session's public fields; nothing sets it.
  QDateTime LastMessage;

  // The result of the location lookup; empty until then.
  std::string ClientCountry;
  std::string ClientState;
  std::string ClientCity;
  std::string ClientZip;
  std::string ClientTimeZone;
  QByteArray ClientFlag;

  // Whether the client's address is banned now. False when the query fails.
  bool isBanned() const;
  // Whether no other session on the server, in any network, holds the folded name.
  bool CanLogin(const std::string& foldedName) const;
  // Whether it is logged in and the database names its user, network and address as an
  // administrator's. False when the query fails.
  bool isAdmin();
  // Starts the location lookup; the client is greeted when it ends. Leaving cancels it.
  void GetClientInfo();

  // Sends a notice after which clients leave. Closes the connection some time later, if the rules
  // say so.
  void SendNotice(std::int32_t command, std::string_view text);

  // Delays its next report until most of its recipients have read, for at most a second.
  void AwaitReaders() { myAwaitsReaders = true; }
  // Bytes relayed for it since it last had to wait for its recipients.
  std::size_t Relayed = 0;

  // Ends the connection from our side. The client is sent nothing, no Error is raised. Harmless on
  // a session that is gone.
  void Close() override;
  // The same without notifying anybody, for a listener that goes away.
  void Abandon();

 protected:
  void Connected() override;
  void Error(std::int32_t code) override;
  void ReceivedMessage(std::int32_t command, std::string_view data) override;
  PollLoop::Clock::duration MustWait(std::int32_t command) override;

 private:
  void LimitRateUnlessTrusted(const MessageRate& rate);
  void Greet(const ClientLocation& location);

  void ChooseNetwork(std::string_view name);
  void CheckPassword(std::string_view digest);
  void TakeName(std::string_view userName);
  bool IsPasswordDigest(std::string_view digest) const;
  void RefuseNetwork(std::string_view name, ServerEvent::Kind why);
  void RefusePassword(ServerEvent::Kind why);
  void RefuseName(std::string_view userName, ServerEvent::Kind why);
  // Answers "FAIL" to a step. From the eleventh failed step on the next message waits, longer each
  // time.
  void Refuse(std::int32_t answer, const ServerEvent& event, StatusParts line);

  void TakeReport(std::string_view data);
  void SendMembers();

  // How long a password waits before it is checked, a report for its recipients, and the request
  // for the list of members for its turn.
  PollLoop::Clock::duration PasswordWait();
  PollLoop::Clock::duration ReportWait();
  PollLoop::Clock::duration MembersWait();
  PollLoop::Clock::duration ExpectedListCost() const;
  PollLoop::Clock::duration UntilMessageTime();
  // Whether the rules allow the user name.
  bool MayBeTaken(std::string_view userName) const;

  // Logs in under the name.
  void EnterAs(std::string_view userName, std::string folded);
  // Adds a status line, if the rules allow its address one more.
  void ReportStatus(StatusParts parts);
  void Leave();

  SessionContext& myContext;
  State myState = State::Idle;
  int myFailedSteps = 0;                                     // before the login, then since
  std::optional<PollLoop::Clock::time_point> myMessageTime;  // until when its next message waits
  std::uint64_t myDeadline = 0;
  bool myIsExpectedToLeave = false;
  ServerEvent::Kind myEnd = ServerEvent::Kind::LeftByServer;  // how it leaves
  bool myAwaitsReaders = false;
  std::string myUsername;
  std::string myFoldedUsername;
  AdminCommands myAdminCommands;
  Seat mySeat;
  std::unique_ptr<AddressTable::Place> myPlace;  // none while not connected, or not counted
  std::unique_ptr<HttpTransfer> myLookup;        // while it is under way
};

}  // namespace corvane
