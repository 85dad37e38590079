#include "tools/swarm/hostile/hostile_side.h"

#include <sys/resource.h>
#include <unistd.h>

#include "client/password_digest.h"

namespace corvane::swarm {

namespace {

constexpr int kNiceness = 10;

ClientPool::Manner MannerOf(const Options& options, const HostilePart::Habits& habits) {
  return {
      .server = options.server,
      .sources = options.strangersSources,
      .connectAtOnce = habits.connectAtOnce,
      .patience = habits.patience,
      .reading = habits.isReading ? ClientPool::Reading::Discarding : ClientPool::Reading::Nothing,
      .takesSignals = false};
}

}  // namespace

HostileSide::HostileSide(const Options& options, std::unique_ptr<HostilePart> part)
    : myPart(std::move(part)), myPool(MannerOf(options, myPart->Custom())) {
  const HostilePart::Habits& habits = myPart->Custom();
  const bool isSame = habits.standing == Standing::SameNetwork;
  const std::string& network = isSame ? options.networks.front() : options.strangersNetwork;
  if (habits.standing == Standing::AtPassword) {
    client::AppendFrame(myFirstStep, client::command::kNetworkName, network);
  }
  for (std::size_t index = 0; index < habits.strangers; ++index) {
    std::optional<client::Login> login;
    if (isSame || habits.standing == Standing::OtherNetwork) {
      login.emplace(client::Account{network, client::PasswordDigest(options.password),
                                    myPart->UserName(index)});
    }
    myPool.Connect(myStrangers.emplace_back(Member{0, index}, std::move(login)));
  }
}

HostileSide::~HostileSide() {
  Stop();
  if (myThread.joinable()) myThread.join();
}

void HostileSide::Start() {
  myThread = std::thread([this] {
    // On Linux a thread has a niceness of its own.
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kNiceness);
    try {
      Run();
    } catch (...) {
      myError = std::current_exception();
    }
  });
}

void HostileSide::Run() {
  myPool.Run(*this);
  for (Client& stranger : myStrangers) {
    myCounts.bytesSent += stranger.BytesSent();
    myPool.Reset(stranger);
  }
}

StrangerCounts HostileSide::Finish() {
  Stop();
  if (myThread.joinable()) myThread.join();
  if (myError) std::rethrow_exception(myError);
  return myCounts;
}

void HostileSide::LoggedIn(Client& stranger) {
  ++myCounts.acted;
  stranger.Send(myFirstStep);
}

void HostileSide::Lost(Client& stranger, Client::State before, const std::string& reason) {
  ++myCounts.ended;
  if (before == Client::State::LoggingIn) myCounts.refusal = reason;
  myPart->Ended(stranger);
  myPool.Connect(stranger);
}

}  // namespace corvane::swarm
