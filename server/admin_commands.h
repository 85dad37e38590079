#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string_view>

#include "net/poll_loop.h"
#include "server/cost_gate.h"

namespace corvane {

class BanList;
class ClientSocket;
struct SessionContext;

// Administrators' commands (9 to 14) of one session, which owns this: decides whether its user is
// an administrator of its network, delays what costs much and carries out the rest. Borrows the
// session, which has to be logged in, and what sessions share.
//
// Limits (CostGate): the costly commands of one session take at most a tenth of the time. So do,
// all together, the questions to the database that user names make costly.
class AdminCommands {
 public:
  AdminCommands(ClientSocket& session, SessionContext& context, ConnectionMemory& memory);
  ~AdminCommands();

  // Whether the database names the session's user, network and address as an administrator's.
  // False when the query fails.
  bool IsAdmin();

  // How long a command has to wait; zero for all but 9 to 14. For the list of bans (13) each call
  // reads the next portion, and the command waits until the list is complete.
  PollLoop::Clock::duration MustWait(std::int32_t command);

  // Carries out a command from 10 to 14 if the user is an administrator. Ignores all others.
  void Handle(std::int32_t command, std::string_view data);

 private:
  PollLoop::Clock::duration QuestionWait();
  PollLoop::Clock::duration ListWait();
  bool Ask(std::chrono::nanoseconds time) const;
  // Whether the name could act as code in the question.
  bool IsNameCode() const;
  // Does the work and charges its cost. Returns that cost.
  template <typename Work>
  std::chrono::nanoseconds Charged(const Work& work);

  void CarryOut(std::int32_t command, std::string_view data);
  // Writes the command to the audit log if it changes anything.
  void Note(std::int32_t command, std::string_view data) const;
  void BeginBanList();
  void SendBans();
  void LiftBan(std::string_view id);

  ClientSocket& mySession;
  SessionContext& myContext;
  ConnectionMemory& myMemory;
  CostGate myGate;
  bool myIsQuestionCostly = false;
  std::unique_ptr<BanList> myBanList;  // while it is read
};

}  // namespace corvane
