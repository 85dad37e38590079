#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "client/ban.h"
#include "client/ending.h"
#include "client/login.h"
#include "client/members.h"
#include "client/report.h"
#include "client/wire.h"

namespace corvane::client {

// Receives the events of a Session. A handler may call any of its methods except Receive, and must
// not destroy it.
class SessionEvents {
 public:
  virtual ~SessionEvents() = default;
  virtual void LoggedIn() = 0;
  // The answer to AskForMembers is complete.
  virtual void Listed(bool isAdministrator) = 0;
  // A message of the operator or an administrator.
  virtual void Said(std::string_view text) = 0;
  virtual void BansListed(const BanList& bans) = 0;
  // Raised once. The caller closes the connection.
  virtual void Ended(const Ending& ending) = 0;
};

// The client's side of the protocol from the greeting to the end, without a socket or a clock.
// Reads the server's bytes, updates the members and collects the bytes to send. States: logging in,
// logged in, over.
//
// Invalid input ends the session with an event. Texts from the server are cut to kMaxTextBytes.
class Session {
 public:
  static constexpr std::size_t kMaxTextBytes = 4096;

  // Borrows the members and the events.
  Session(Account account, Members& members, SessionEvents& events);

  // Processes bytes from the server, in pieces of any size.
  void Receive(std::string_view bytes, Clock::time_point now);
  // Returns the bytes to send, and clears them.
  std::string TakeOutput();

  bool IsLoggedIn() const { return myState == State::LoggedIn; }
  bool IsOver() const { return myState == State::Over; }
  // Whether AskForMembers waits for its answer.
  bool AwaitsList() const { return myAwaitsList; }

  // These do nothing unless logged in.
  //
  // Requests the member list and then the rights; the answer about rights marks the end of the
  // list. Does nothing while AwaitsList().
  void AskForMembers();
  void Send(const Report& report);
  void Send(std::int32_t command, std::string_view payload);

  // Sends the farewell, if logged in, and ends the session.
  void Leave();
  // Ends the session with this cause, for example a lost connection. Does nothing if it is over.
  void End(const Ending& ending);

 private:
  enum class State { LoggingIn, LoggedIn, Over };

  void Take(std::int32_t command, std::string_view payload, Clock::time_point now);
  void TakeLoggedIn(std::int32_t command, std::string_view payload, Clock::time_point now);
  void TakeMember(std::string_view payload, Clock::time_point now);
  void TakeRights(std::string_view payload);
  void Break(const char* what);

  Login myLogin;
  Members& myMembers;
  SessionEvents& myEvents;
  FrameCutter myCutter;
  std::string myOutput;
  State myState = State::LoggingIn;
  bool myAwaitsList = false;
};

}  // namespace corvane::client
