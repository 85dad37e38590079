#include <cstdio>

#include "tools/swarm/client_pool.h"
#include "tools/swarm/runs.h"
#include "tools/swarm/server_probe.h"

namespace corvane::swarm {

namespace {

class ChurnRun : public ClientEvents {
 public:
  explicit ChurnRun(const Options& options)
      : myOptions(options),
        myPool({options.server, options.sources}),
        myClients(MakeMembers(options)),
        myResult(options) {
    if (options.serverPid) myServer.emplace(*options.serverPid);
  }

  RunResult Execute() {
    if (myServer) myServer->StartCpuClock();
    const Clock::time_point start = Clock::now();
    for (const auto& client : myClients)
      Connect(*client);
    myPool.WakeAt(start + *myOptions.duration);
    myPool.Run(*this);

    myResult.elapsed = Clock::now() - start;
    myResult.visits = myVisits;
    if (myServer) {
      myResult.serverCpu = myServer->CpuTime();
      myResult.serverRssKib = myServer->RssKib();
    }
    return myResult;
  }

  void LoggedIn(Client& client) override {
    if (myOptions.leave == LeaveWay::Orderly) {
      myPool.Leave(client);
    } else {
      myPool.Reset(client);
      Left(client);
    }
  }
  void Left(Client& client) override {
    ++myVisits;
    IsOut();
    if (!myIsEnding) Connect(client);
  }
  void Lost(Client& client, Client::State before, const std::string& reason) override {
    std::fprintf(stderr, "corvane-swarm: %s: %s\n", client.UserName().c_str(), reason.c_str());
    ++(before >= Client::State::Online ? myResult.disconnects : myResult.connectFailures);
    myIsEnding = true;
    IsOut();
  }
  void Wake(Clock::time_point) override { myIsEnding = true; }
  void Interrupted() override {
    // At the second signal, do not wait for the server's answers.
    if (myIsEnding) myPool.Stop();
    myIsEnding = true;
  }

 private:
  void Connect(Client& client) {
    ++myUnderway;
    myPool.Connect(client);
  }
  void IsOut() {
    --myUnderway;
    if (myIsEnding && myUnderway == 0) myPool.Stop();
  }

  const Options& myOptions;
  ClientPool myPool;
  std::vector<std::unique_ptr<Client>> myClients;
  std::optional<ServerProbe> myServer;
  RunResult myResult;
  std::uint64_t myVisits = 0;
  std::size_t myUnderway = 0;
  bool myIsEnding = false;
};

}  // namespace

RunResult RunChurn(const Options& options) {
  return ChurnRun(options).Execute();
}

}  // namespace corvane::swarm
