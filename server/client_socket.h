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
#include "server/cost_gate.h"
#include "server/seat.h"
#include "server/server_networks.h"

namespace corvane {

class BanList;
class HttpTransfer;
class MapSocket;
struct ClientLocation;
struct SessionContext;

// One connected client: greets it, refuses a banned address, walks it through the three steps of
// the login, keeps its last report and has its listener relay what changed. Borrows the listener.
//
// A session leaves exactly once, however its connection ends: its network is told, its seat given
// back, its log-out raised. Messages wait while the client's location is looked up.
class ClientSocket : public EasyTCPSocket {
 public:
  enum class State {
    Idle,             // not handed off yet
    Greeting,         // the location is being looked up
    WaitingNetwork,   // command 1 is next
    WaitingPassword,  // command 2 is next
    WaitingUserName,  // command 3 is next
    LoggedIn,
    Refused,  // a banned address: nothing is answered any more
    Gone
  };

  ClientSocket(PollLoop& loop, MapSocket& parent);
  ~ClientSocket() override;

  std::shared_ptr<ClientSocket> Self() {
    return std::static_pointer_cast<ClientSocket>(shared_from_this());
  }
  State LoginState() const { return myState; }
  bool HoldsSeat() const { return mySeat.IsHeld(); }

  // The name that it logged in with, empty until then; and the same folded, for comparing.
  const std::string& Username() const { return myUsername; }
  const std::string& FoldedUsername() const { return myFoldedUsername; }

  // The last report.
  std::int32_t X = 0;
  std::int32_t Y = 0;
  std::int32_t Facet = 0;
  MapSocket& myParent;
  std::int32_t HP = 0;
  bool InBattle = false;
  std::int32_t LastUpdate = 0;  // in sixtieths of a second since the program started
  bool IsDead = false;

  // What login step 1 last looked up, with a seat there or without; none before and for an unknown
  // name. Only the session itself changes it.
  NetworkRef myNetwork;

  // Whether it is sent what the network's members are sent.
  bool HearsItsNetwork() const;

  // Its name; empty where there is none.
  std::string NetworkName() const { return myNetwork ? myNetwork->NetworkName : std::string(); }

  // Kept with the session; nothing sets it.
  QDateTime LastMessage;

  // What the location lookup found.
  std::string ClientCountry;
  std::string ClientState;
  std::string ClientCity;
  std::string ClientZip;
  std::string ClientTimeZone;
  QByteArray ClientFlag;

  // Whether the client's address is banned now.
  bool isBanned() const;
  // Whether no other session on the server, in whatever network, holds the folded name.
  bool CanLogin(const std::string& foldedName) const;
  // Whether the database names this user, network and address as an administrator's.
  bool isAdmin();
  // Looks up the client's location and greets it then.
  void GetClientInfo();

  // Sends a notice upon which clients leave, and closes the connection a while later, where the
  // rules say so.
  void SendNotice(std::int32_t command, std::string_view text);

  // To be called when its reports pile up with most of its recipients: its next one waits until
  // they have read.
  void AwaitReaders() { myAwaitsReaders = true; }
  // Bytes that were relayed for it since it last had to wait for its recipients.
  std::size_t Relayed = 0;

  // Ends the connection from our side. The client is sent nothing, no Error is raised. Harmless on
  // a session that is gone.
  void Close() override;
  // The same without telling anybody, for a listener that goes away.
  void Abandon();

 protected:
  void Connected() override;
  void Error(std::int32_t code) override;
  void ReceivedMessage(std::int32_t command, std::string_view data) override;
  PollLoop::Clock::duration MustWait(std::int32_t command) override;

 private:
  void LimitRateUnlessTrusted(const MessageRate& rate);
  void Greet(const ClientLocation& location);
  void HandleMemberCommand(std::int32_t command, std::string_view data);
  void NoteAdminCommand(std::int32_t command, std::string_view data);
  void HandleAdminCommand(std::int32_t command, std::string_view data);

  void ChooseNetwork(std::string_view name);
  void CheckPassword(std::string_view digest);
  void TakeName(std::string_view userName);
  bool IsPasswordDigest(std::string_view digest) const;
  void RefuseNetwork(std::string_view name);
  void RefusePassword();
  void RefuseName(std::string_view userName);
  // Counts a failed step. From the eleventh on the next message waits for a moment, longer each
  // time: a client that is merely wrong notices nothing.
  void SlowDown();

  void TakeReport(std::string_view data);
  void SendMembers();
  void SendBans();
  void LiftBan(std::string_view id);

  // How long a password has to wait before it is looked at; an administrator's command, until
  // earlier ones are paid for; and the list of bans, of which some is read at each call.
  PollLoop::Clock::duration PasswordWait();
  PollLoop::Clock::duration QuestionWait();
  PollLoop::Clock::duration ListWait();
  // How long a report has to wait for its recipients, and the question for the members for its
  // turn.
  PollLoop::Clock::duration ReportWait();
  PollLoop::Clock::duration MembersWait();
  PollLoop::Clock::duration ExpectedListCost() const;
  PollLoop::Clock::duration UntilMessageTime();
  void BeginBanList();
  bool AskWhetherAdmin(std::chrono::nanoseconds time);
  // Does the work and has the session pay for it. Returns what it cost.
  template <typename Work>
  std::chrono::nanoseconds Charged(const Work& work);
  // Whether the rules let anybody take the user name.
  bool MayBeTaken(std::string_view userName) const;

  void SetNetwork(NetworkRef network);
  // Logs in under the name.
  void EnterAs(std::string_view userName, std::string folded);
  // Adds a status line, if the rules allow its address one more.
  void ReportStatus(StatusParts parts);
  void Leave();

  SessionContext& myContext;
  State myState = State::Idle;
  int myFailedSteps = 0;                                     // before the log-in, then since
  std::optional<PollLoop::Clock::time_point> myMessageTime;  // until when its next message waits
  std::uint64_t myDeadline = 0;
  bool myIsExpectedToLeave = false;
  bool myAwaitsReaders = false;
  std::string myUsername;
  std::string myFoldedUsername;
  bool myNameIsCode = false;  // it may be more than a value in the administrator question
  bool myIsQuestionCostly = false;
  CostGate myQuestions;                // what its own cost
  std::unique_ptr<BanList> myBanList;  // while it is read
  Seat mySeat;
  std::unique_ptr<AddressTable::Place> myPlace;  // none while not connected, or not counted
  std::unique_ptr<HttpTransfer> myLookup;        // while it is under way
};

}  // namespace corvane
