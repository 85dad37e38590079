#include <cstdio>
#include <random>

#include "tools/swarm/client_pool.h"
#include "tools/swarm/player.h"
#include "tools/swarm/runs.h"

namespace corvane::swarm {

namespace {

constexpr std::chrono::milliseconds kTick{50};
constexpr std::chrono::seconds kLineInterval{1};

class DemoRun : public ClientEvents {
 public:
  explicit DemoRun(const Options& options)
      : myOptions(options),
        myPool({options.server, options.sources}),
        myRandom(std::random_device{}()) {
    for (auto& client :
         MakeMembers(options, [](Member, std::size_t place) { return PlayerName(place); }))
      mySeats.push_back({std::move(client), std::nullopt, {}});
  }

  int Execute() {
    const Clock::time_point now = Clock::now();
    if (myOptions.duration) myEnd = now + *myOptions.duration;
    myNextLine = now + kLineInterval;
    for (Seat& seat : mySeats)
      myPool.Connect(*seat.client);
    myPool.WakeAt(now + kTick);
    myPool.Run(*this);
    return myExitCode;
  }

  void LoggedIn(Client& client) override {
    Seat& seat = SeatOf(client);
    ++myOnline;
    myWasAnyoneIn = true;
    const Clock::time_point now = Clock::now();
    seat.player.emplace(myRandom, now);
    seat.change = now + RandomTime(20, 240);
    SendReport(seat);
  }

  void Received(Client& client, std::int32_t command, std::string_view) override {
    Seat& seat = SeatOf(client);
    switch (command) {
      case client::command::kMember:
        ++myReceived;
        break;
      case client::command::kKicked:
        GoAway(seat, RandomTime(8, 15));
        break;
      case client::command::kBanned:
        GoAway(seat, RandomTime(30, 60));
        break;
      case client::command::kBye:
        // The server sends everybody away; there is nothing left to ask for.
        myPool.Reset(client);
        Left(client);
        seat.change = Clock::now() + RandomTime(15, 30);
        break;
      default:
        break;
    }
  }

  void Left(Client& client) override {
    SeatOf(client).player.reset();
    --myOnline;
    StopIfAllLeft();
  }

  void Lost(Client& client, Client::State before, const std::string& reason) override {
    Seat& seat = SeatOf(client);
    if (before >= Client::State::Online) Left(client);
    if (myIsEnding) {
      StopIfAllLeft();
      return;
    }
    if (!myWasAnyoneIn) {
      std::fprintf(stderr, "corvane-swarm: %s: %s\n", client.UserName().c_str(), reason.c_str());
      myExitCode = 1;
      End();
      return;
    }
    seat.change = Clock::now() + RandomTime(5, 10);
  }

  void Wake(Clock::time_point now) override {
    if (myIsEnding) return;
    for (Seat& seat : mySeats)
      Act(seat, now);
    if (now >= myNextLine) {
      PrintLine();
      myNextLine += kLineInterval;
    }
    if (now >= myEnd) {
      End();
    } else {
      myPool.WakeAt(now + kTick);
    }
  }

  void Interrupted() override {
    // At the second signal, do not wait for the server's answers.
    if (myIsEnding) myPool.Stop();
    End();
  }

 private:
  struct Seat {
    std::unique_ptr<Client> client;
    std::optional<Player> player;  // while online
    Clock::time_point change;      // when it leaves or comes back
  };

  Seat& SeatOf(const Client& client) {
    const Member member = client.Identity();
    return mySeats[member.network * myOptions.users + member.user];
  }

  void GoAway(Seat& seat, Clock::duration absence) {
    seat.change = Clock::now() + absence;
    myPool.Leave(*seat.client);
  }

  void Act(Seat& seat, Clock::time_point now) {
    const Client::State state = seat.client->CurrentState();
    if (state == Client::State::Offline && now >= seat.change) {
      myPool.Connect(*seat.client);
      return;
    }
    if (state != Client::State::Online) return;
    if (now >= seat.change) {
      GoAway(seat, RandomTime(5, 20));
      return;
    }
    if (now < seat.player->NextStep()) return;
    MeetOthers(seat);
    if (seat.player->Step(myRandom, now)) SendReport(seat);
  }

  void MeetOthers(Seat& seat) {
    constexpr unsigned kOneMeetingInFights = 12;
    const std::size_t network = seat.client->Identity().network;
    for (std::size_t user = 0; user < myOptions.users; ++user) {
      Seat& other = mySeats[network * myOptions.users + user];
      if (&other == &seat || !other.player || !seat.player->CanFight(*other.player)) continue;
      if (myRandom() % kOneMeetingInFights != 0) continue;
      seat.player->StartFight();
      other.player->StartFight();
      return;
    }
  }

  void SendReport(Seat& seat) {
    myPool.Send(*seat.client, seat.player->Report());
    ++mySent;
  }

  void PrintLine() {
    std::printf(
        "%zu of %zu online, %llu reports and %llu deliveries in this second, "
        "%llu and %llu in all\n",
        myOnline, mySeats.size(), static_cast<unsigned long long>(mySent - mySentBefore),
        static_cast<unsigned long long>(myReceived - myReceivedBefore),
        static_cast<unsigned long long>(mySent), static_cast<unsigned long long>(myReceived));
    mySentBefore = mySent;
    myReceivedBefore = myReceived;
  }

  void End() {
    if (myIsEnding) return;
    myIsEnding = true;
    for (Seat& seat : mySeats) {
      if (myOptions.leave == LeaveWay::Abrupt && seat.player) {
        myPool.Reset(*seat.client);
        Left(*seat.client);
      } else {
        myPool.Leave(*seat.client);
      }
    }
    StopIfAllLeft();
  }

  void StopIfAllLeft() {
    if (myIsEnding && myOnline == 0) myPool.Stop();
  }

  Clock::duration RandomTime(int leastSeconds, int mostSeconds) {
    std::uniform_int_distribution<int> milliseconds(leastSeconds * 1000, mostSeconds * 1000);
    return std::chrono::milliseconds(milliseconds(myRandom));
  }

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

}  // namespace

int RunDemo(const Options& options) {
  return DemoRun(options).Execute();
}

}  // namespace corvane::swarm
