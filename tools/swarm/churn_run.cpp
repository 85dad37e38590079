#include "tools/swarm/churn_run.h"

#include <cstdio>

#include "tools/swarm/members.h"

namespace corvane::swarm {

ChurnRun::ChurnRun(const Options& options)
    : myOptions(options),
      myPool(options.server, options.sources, options.connectAtOnce),
      myClients(MakeMembers(options)) {
  if (options.serverPid) myServer.emplace(*options.serverPid);
  myResult.mode = options.modeName;
  myResult.networks = options.networks.size();
  myResult.users = options.users;
}

RunResult ChurnRun::Execute() {
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

void ChurnRun::LoggedIn(Client& client) {
  if (myOptions.leave == LeaveWay::Orderly) {
    myPool.Leave(client);
  } else {
    myPool.Reset(client);
    Left(client);
  }
}

void ChurnRun::Left(Client& client) {
  ++myVisits;
  IsOut();
  if (!myIsEnding) Connect(client);
}

void ChurnRun::Lost(Client& client, Client::State before, const std::string& reason) {
  std::fprintf(stderr, "corvane-swarm: %s: %s\n", client.UserName().c_str(), reason.c_str());
  const bool wasIn = before == Client::State::Online || before == Client::State::Leaving;
  ++(wasIn ? myResult.disconnects : myResult.connectFailures);
  End();
  IsOut();
}

void ChurnRun::Interrupted() {
  // The second time, the user does not want to wait for the server's answers.
  if (myIsEnding) myPool.Stop();
  End();
}

void ChurnRun::Connect(Client& client) {
  ++myUnderway;
  myPool.Connect(client);
}

void ChurnRun::IsOut() {
  --myUnderway;
  if (myIsEnding && myUnderway == 0) myPool.Stop();
}

}  // namespace corvane::swarm
