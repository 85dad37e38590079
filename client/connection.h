#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <QString>
#include <QTcpSocket>
#include <QTimer>

#include "client/members.h"
#include "client/session.h"
#include "client/tls.h"
#include "client/wire.h"
#include "framework/signal.h"

namespace corvane::client {

// The server to log in to, and the account.
struct Destination {
  QString host;
  std::uint16_t port = 0;
  Account account;
  std::optional<Tls> tls{};  // none: not encrypted
};

// A client's connection to a server, kept alive: connects, logs in, and asks for the members and
// the client's rights after the login and every 30 s. After a loss it reconnects with growing
// delays; it does not if it never was online, nor after a kick, a ban or "BYE". With TLS it sends
// nothing before it trusts the server's certificate, each time that it connects.
//
// Owns the socket, the session and the members. Reads a bounded amount per turn of Qt's loop, so no
// server can block the loop. A handler of its events may call any method.
class Connection : private SessionEvents {
 public:
  enum class State {
    Offline,
    Connecting,  // TCP and TLS
    LoggingIn,
    Online,
    Waiting  // reconnects after RetryIn()
  };

  // The defaults are for use; tests shorten them.
  struct Timing {
    std::chrono::milliseconds firstDelay{2000};
    std::chrono::milliseconds maxDelay{60'000};
    std::chrono::milliseconds refreshInterval{30'000};
    // From the greeting to the end of the login. Long, because the server delays its answers after
    // wrong passwords.
    std::chrono::milliseconds loginTimeout{60'000};
    // From connecting to the greeting. The server looks up a client's location first.
    std::chrono::milliseconds greetingTimeout{20'000};
  };

  explicit Connection(Timing timing);
  ~Connection() override;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // CurrentState() or IsAdministrator() has changed.
  Signal<> StateChanged;
  // A connection has ended, or an attempt to connect has failed. The state is already Waiting or
  // Offline; StateChanged follows.
  Signal<const Ending&> SessionEnded;
  // A message of the operator or an administrator.
  std::function<void(std::string_view text)> MessageReceived;
  Signal<const BanList&> BansReceived;

  // Ends the current connection, if there is one, and connects.
  void Open(Destination destination);
  // Leaves the network, or gives up reconnecting.
  void Close();
  // Ends the delay before the next attempt.
  void RetryNow();

  State CurrentState() const { return myState; }
  const Destination& CurrentDestination() const { return myDestination; }
  bool IsAdministrator() const { return myIsAdministrator; }
  std::chrono::milliseconds RetryIn() const;

  // The other members of the network. After a loss, a kick or a ban they stay as they were; leaving
  // and Open remove them.
  client::Members& Others() { return myMembers; }

  // These do nothing unless online.
  void Send(const Report& report) { SendInSession(report); }
  // Commands for administrators. They separate fields by bars, so a user name must not hold one.
  void Kick(const std::string& user) {
    SendInSession(command::kAdminKick, user + '|' + myDestination.account.network);
  }
  void BanUser(const std::string& user, const std::string& reason) {
    SendInSession(command::kAdminBan, user + '|' + reason);
  }
  void SendMessage(const std::string& text) { SendInSession(command::kAdminMessage, text); }
  void AskForBans() { SendInSession(command::kAdminListBans, std::string_view()); }
  void LiftBan(const std::string& id) { SendInSession(command::kAdminLiftBan, id); }

 private:
  void Start();
  void Read();
  void Flush();
  void Refresh();
  void MakeSocket();
  void Connected();
  void EndSession(Ending::Cause cause, const QString& text = {});
  // The fault of an attempt with TLS that has not led to a trusted server.
  std::optional<Ending> FaultOfTls() const;
  void Change(State state);
  template <typename... What>
  void SendInSession(const What&... what) {
    if (mySession) mySession->Send(what...);
    Flush();
  }

  void LoggedIn() override;
  void Listed(bool isAdministrator) override;
  void Said(std::string_view text) override;
  void BansListed(const BanList& bans) override;
  void Ended(const Ending& ending) override;

  Timing myTiming;
  Destination myDestination;
  client::Members myMembers;
  // Null when Offline or Waiting. Read() shares it, because a handler may replace it meanwhile.
  std::shared_ptr<Session> mySession;
  std::unique_ptr<QTcpSocket> mySocket;  // of the last attempt
  QTimer myRetry;                        // while waiting
  QTimer myRefresh;                      // while online
  QTimer myLoginTimeout;
  QTimer myReadAgain;
  State myState = State::Offline;
  bool myIsAdministrator = false;
  bool myWasOnline = false;
  bool myHasHeard = false;  // a byte from the server
  int myRetries = 0;        // since it was online
};

}  // namespace corvane::client
