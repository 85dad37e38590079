#include "tools/swarm/hostile/attackers.h"

#include <algorithm>
#include <sys/resource.h>
#include <unistd.h>

#include "client/password_digest.h"

namespace corvane::swarm {

namespace {

constexpr int kNiceness = 10;

ClientPool::Manner MannerOf(const Options& options, const Attack& attack) {
  return {
      .server = options.server,
      .sources = options.strangersSources,
      .connectAtOnce = attack.connectAtOnce,
      .patience = attack.patience,
      .reading = attack.isReading ? ClientPool::Reading::Discarding : ClientPool::Reading::Nothing,
      .takesSignals = false};
}

}  // namespace

Attackers::Attackers(const Options& options, Attack attack)
    : myAttack(std::move(attack)), myPool(MannerOf(options, myAttack)) {
  const bool isSame = myAttack.standing == Standing::SameNetwork;
  const std::string& network = isSame ? options.networks.front() : options.strangersNetwork;
  if (myAttack.standing == Standing::AtPassword) {
    client::AppendFrame(myFirstStep, client::command::kNetworkName, network);
  }
  for (std::size_t index = 0; index < myAttack.strangers; ++index) {
    std::optional<client::Login> login;
    if (isSame || myAttack.standing == Standing::OtherNetwork) {
      std::string name = std::string(kStrangerPrefix) + std::to_string(index);
      name.resize(std::max(name.size(), myAttack.nameBytes), 'n');
      login.emplace(client::Account{network, client::PasswordDigest(options.password), name});
    }
    myPool.Connect(myStrangers.emplace_back(Member{0, index}, std::move(login)));
  }
}

Attackers::~Attackers() {
  Stop();
  if (myThread.joinable()) myThread.join();
}

void Attackers::Start() {
  myThread = std::thread([this] {
    // On Linux each thread has its own niceness.
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kNiceness);
    try {
      Run();
    } catch (...) {
      myError = std::current_exception();
    }
  });
}

void Attackers::Run() {
  myPool.Run(*this);
  for (Client& stranger : myStrangers) {
    myCounts.bytesSent += stranger.BytesSent();
    myPool.Reset(stranger);
  }
}

StrangerCounts Attackers::Finish() {
  Stop();
  if (myThread.joinable()) myThread.join();
  if (myError) std::rethrow_exception(myError);
  return myCounts;
}

void Attackers::LoggedIn(Client& stranger) {
  ++myCounts.acted;
  stranger.Send(myFirstStep);
}

void Attackers::Lost(Client& stranger, Client::State before, const std::string& reason) {
  ++myCounts.ended;
  if (before == Client::State::LoggingIn) myCounts.refusal = reason;
  stranger.RestUntil(Clock::now() + myAttack.absence);
  myPool.Connect(stranger);
}

}  // namespace corvane::swarm
