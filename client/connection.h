#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <QString>
#include <QTcpSocket>
#include <QTimer>

#include "client/members.h"
#include "client/session.h"
#include "client/wire.h"

namespace corvane::client {

// Where to log in, and as whom.
struct Destination {
  QString host;
  std::uint16_t port = 0;
  Account account;
};

// Keeps one log-in alive: connects, logs in, asks for members and rights at once and every half
// minute, and comes back with growing pauses after the connection was lost. It does not come back
// where it never was in, nor after a kick, a ban or "BYE".
//
// Reads a bounded piece a turn of Qt's loop, so that no server holds the loop up. Raises its events
// from the loop; each may call any method.
class Connection : private SessionEvents {
 public:
  enum class State {
    Offline,
    Connecting,  // TCP
    LoggingIn,
    Online,
    Waiting  // comes back when RetryIn() is over
  };

  // Times that tests shorten.
  struct Timing {
    std::chrono::milliseconds firstDelay{2000};
    std::chrono::milliseconds maxDelay{60'000};
    std::chrono::milliseconds refreshInterval{30'000};
    // From connecting to the end of the log-in. The server looks up where a client is first, and
    // may hold back the answer to somebody who has typed wrong passwords.
    std::chrono::milliseconds loginTimeout{60'000};
  };

  explicit Connection(Timing timing);
  ~Connection() override;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // The state or the rights have changed.
  std::function<void()> StateChanged;
  // A connection has ended or did not come about. The state is Waiting where the client comes back
  // by itself; StateChanged follows.
  std::function<void(const Ending&)> SessionEnded;
  // The operator or an administrator says something.
  std::function<void(std::string_view text)> MessageReceived;
  std::function<void(const BanList&)> BansReceived;

  // Connects, ending the connection before.
  void Open(Destination destination);
  // Leaves, or stops coming back.
  void Close();
  // Comes back at once instead of when the pause is over.
  void RetryNow();

  State CurrentState() const { return myState; }
  const Destination& CurrentDestination() const { return myDestination; }
  bool IsAdministrator() const { return myIsAdministrator; }
  std::chrono::milliseconds RetryIn() const;

  // The other members; none unless online.
  client::Members& Others() { return myMembers; }

  // These do nothing unless online.
  void Send(const Report& report) { SendInSession(report); }
  // The administrators' commands. A user whose name holds a bar cannot be named in them.
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
  void EndSession(Ending::Cause cause, const QString& text = {});
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
  // Shared with the call that feeds it, since an event may replace it; null unless connecting,
  // logging in or online.
  std::shared_ptr<Session> mySession;
  QTcpSocket mySocket;
  QTimer myRetry;    // while waiting
  QTimer myRefresh;  // while online
  QTimer myLoginTimeout;
  QTimer myReadAgain;
  State myState = State::Offline;
  bool myIsAdministrator = false;
  bool myWasOnline = false;
  int myRetries = 0;  // since it was online
};

}  // namespace corvane::client
