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

// What administrators of a network ask and command (9 to 14), for one session, which owns this.
// Borrows that session and what sessions share. Only a session that is logged in may call it.
//
// Limits: costly questions and lists take a tenth of the processor's time, for each session and
// for all sessions together whose names make questions costly; until earlier ones are paid for the
// next command waits.
class AdminCommands {
 public:
  AdminCommands(ClientSocket& session, SessionContext& context, ConnectionMemory& memory);
  ~AdminCommands();

  // Whether the database names the session's user, network and address as an administrator's.
  // False when the query fails.
  bool IsAdmin();

  // How long a command has to wait; zero for any but 9 to 14. Waiting for the list of bans reads
  // some of it at each call.
  PollLoop::Clock::duration MustWait(std::int32_t command);

  // Carries out a command from 10 to 14 for an administrator; ignores it for anybody else.
  void Handle(std::int32_t command, std::string_view data);

 private:
  PollLoop::Clock::duration QuestionWait();
  PollLoop::Clock::duration ListWait();
  bool Ask(std::chrono::nanoseconds time) const;
  // Whether the name may be more than a value in the question.
  bool IsNameCode() const;
  // Does the work and charges its cost. Returns that cost.
  template <typename Work>
  std::chrono::nanoseconds Charged(const Work& work);

  void CarryOut(std::int32_t command, std::string_view data);
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
