#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tools/swarm/client_pool.h"
#include "tools/swarm/options.h"
#include "tools/swarm/player.h"

namespace corvane::swarm {

// The demonstration: players live in their networks until the run is interrupted or its time is
// up. They obey the server (kick, ban, "BYE") and come back later, and they wait for a server that
// is gone for a while; only a log-in that fails before anybody was ever in ends the run.
class DemoRun : public ClientEvents {
 public:
  explicit DemoRun(const Options& options);

  // Returns the program's exit code.
  int Execute();

  void LoggedIn(Client& client) override;
  void Received(Client& client, std::int32_t command, std::string_view payload) override;
  void Left(Client& client) override;
  void Lost(Client& client, Client::State before, const std::string& reason) override;
  void Wake(Clock::time_point now) override;
  void Interrupted() override;

 private:
  struct Seat {
    std::unique_ptr<Client> client;
    std::optional<Player> player;  // while online
    Clock::time_point change;      // online: goes then; offline: comes then
  };

  Seat& SeatOf(const Client& client);
  void GoAway(Seat& seat, Clock::duration absence);
  void Act(Seat& seat, Clock::time_point now);
  void MeetOthers(Seat& seat);
  void SendReport(Seat& seat);
  void PrintLine();
  void End();
  void StopIfAllLeft();
  Clock::duration RandomTime(int leastSeconds, int mostSeconds);

  const Options& myOptions;
  ClientPool myPool;
  std::mt19937 myRandom;
  std::vector<Seat> mySeats;
  Clock::time_point myEnd = Clock::time_point::max();
  Clock::time_point myNextLine;
  std::size_t myOnline = 0;
  bool myWasAnyoneIn = false;
  bool myIsEnding = false;
  int myExitCode = 0;
  std::uint64_t mySent = 0;
  std::uint64_t myReceived = 0;
  std::uint64_t mySentBefore = 0;  // at the last line
  std::uint64_t myReceivedBefore = 0;
};

}  // namespace corvane::swarm
