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

// What a session tells whoever drives it.
class SessionEvents {
 public:
  virtual ~SessionEvents() = default;
  virtual void LoggedIn() = 0;
  // The members and the rights that were asked for have come.
  virtual void Listed(bool isAdministrator) = 0;
  // A message of the operator or of an administrator.
  virtual void Said(std::string_view text) = 0;
  virtual void BansListed(const BanList& bans) = 0;
  // The session is over; the connection is to be closed.
  virtual void Ended(const Ending& ending) = 0;
};

// One log-in from the greeting to its end: reads what the server sends, keeps the members up to
// date and writes what is to be sent. Has no socket and no clock, so that it can be fed anything.
//
// Whatever comes, it ends in an event. Texts from the server are cut to kMaxTextBytes.
class Session {
 public:
  static constexpr std::size_t kMaxTextBytes = 4096;

  // Borrows the members and the events.
  Session(Account account, Members& members, SessionEvents& events);

  // Takes what has come. `now` is when.
  void Receive(std::string_view bytes, Clock::time_point now);
  // What is to be sent, which is forgotten here.
  std::string TakeOutput();

  bool IsLoggedIn() const { return myState == State::LoggedIn; }
  bool IsOver() const { return myState == State::Over; }
  // Whether the list was asked for and has not come.
  bool AwaitsList() const { return myAwaitsList; }

  // These do nothing unless logged in.
  //
  // Asks for the members and, behind them, for the rights, whose answer ends the list; nothing
  // while the list asked for before has not come.
  void AskForMembers();
  void Send(const Report& report);
  void Send(std::int32_t command, std::string_view payload);
  // Asks the server's leave; what comes after it is not read any more.
  void Leave();

  // Ends the session for a reason outside of it.
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
