#include "tools/swarm/client_pool.h"
#include "tools/swarm/runs.h"

namespace corvane::swarm {

namespace {

// One round: the clients wait for the greeting and stay.
class Arrival : public ClientEvents {
 public:
  explicit Arrival(const Options& options)
      : myClients(options.clients),
        myPool({.server = options.server,
                .connectAtOnce = options.clients,
                .patience = std::chrono::hours(24 * 365),
                .takesSignals = false}) {
    myPool.WakeAt(myStart + *options.duration);
  }

  RushResult::Round Execute() {
    std::deque<Client> clients;
    for (std::size_t i = 0; i < myClients; ++i)
      myPool.Connect(clients.emplace_back(Member{0, i}, std::nullopt));
    myPool.Run(*this);
    for (Client& client : clients)
      myPool.Reset(client);
    return myRound;
  }

  void LoggedIn(Client&) override {
    ++myRound.greeted;
    myRound.untilLastGreeted = Clock::now() - myStart;
    StopIfDone();
  }
  void Lost(Client&, Client::State before, const std::string&) override {
    ++(before == Client::State::Online ? myRound.cutOff : myRound.refused);
    StopIfDone();
  }
  void Wake(Clock::time_point) override { myPool.Stop(); }
  void Interrupted() override {}

 private:
  void StopIfDone() {
    if (myRound.greeted + myRound.refused == myClients) myPool.Stop();
  }

  const Clock::time_point myStart = Clock::now();
  const std::size_t myClients;
  ClientPool myPool;
  RushResult::Round myRound;
};

}  // namespace

RushResult RunRush(const Options& options) {
  RushResult result;
  result.clients = options.clients;
  for (std::size_t round = 0; round < options.rounds; ++round)
    result.rounds.push_back(Arrival(options).Execute());
  return result;
}

}  // namespace corvane::swarm
