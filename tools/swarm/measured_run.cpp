#include <cstdio>

#include "tools/swarm/fanout_load.h"
#include "tools/swarm/hostile/attacked_load.h"
#include "tools/swarm/rate_load.h"
#include "tools/swarm/runs.h"
#include "tools/swarm/server_probe.h"

namespace corvane::swarm {

namespace {

constexpr std::chrono::seconds kSettleTime{1};
// Deliveries that do not come for this long are missing.
constexpr std::chrono::seconds kDrainTime{10};
// Of the honest members during a hostile run.
constexpr double kHonestBurstsPerSecond = 10;  // of all members together
constexpr std::size_t kHonestBurst = 5;

// Sends nothing, and expects nothing. Prints a line once all are in, for scripts that wait for it.
class IdleLoad : public Load {
 public:
  explicit IdleLoad(ClientPool& pool) : myPool(pool) {}

  void Start(Clock::time_point, Clock::time_point until) override {
    std::puts("ready");
    std::fflush(stdout);
    myPool.WakeAt(until);
  }
  void Wake(Clock::time_point) override { Stop(); }
  Clock::time_point Delivered(Member, std::uint32_t, Clock::time_point now) override { return now; }
  void Stop() override { myIsStopped = true; }
  bool IsDone() const override { return myIsStopped; }

 private:
  ClientPool& myPool;
  bool myIsStopped = false;
};

class MeasuredRun : public ClientEvents {
 public:
  explicit MeasuredRun(const Options& options)
      : myOptions(options),
        myPool({options.server, options.sources}),
        myBook(options.networks.size(), options.users, options.reporters),
        myClients(MakeMembers(options)),
        myLoad(MakeLoad(options)),
        myResult(options) {
    if (options.serverPid) myServer.emplace(*options.serverPid);
    if (options.mode != Mode::Idle) myResult.deliveries.emplace();
  }

  RunResult Execute() {
    if (myOptions.measuresIdle) myResult.emptyRssKib = ServerRssKib();
    for (const auto& client : myClients)
      myPool.Connect(*client);
    myPool.Run(*this);

    if (auto& deliveries = myResult.deliveries) {
      deliveries->sent = myBook.Sent();
      deliveries->expected = myBook.Expected();
      deliveries->received = myBook.Received();
      deliveries->missing = myBook.Missing();
    }
    myResult.unexpected = myBook.Unexpected();
    myLoad->AddTo(myResult);
    return myResult;
  }

  void LoggedIn(Client&) override {
    if (++myOnline < myClients.size()) return;
    if (myOptions.measuresIdle) {
      myPhase = Phase::Settling;
      myPool.WakeAt(Clock::now() + kSettleTime);
    } else {
      StartSending();
    }
  }

  void Received(Client& client, std::int32_t command, std::string_view payload) override {
    // Members hear of others that leave.
    if (myPhase == Phase::Leaving) return;
    const std::optional<client::MemberRecord> relay =
        command == client::command::kMember ? client::ParseRelay(payload) : std::nullopt;
    const std::optional<Member> sender =
        relay ? ParseUserName(myOptions.userPrefix, relay->name) : std::nullopt;
    if (!sender) {
      if (myLoad->IsDisturbing(payload)) myBook.ReceiveForeign();
      return;
    }
    if (!myBook.Receive(client.Identity(), *sender, relay->report)) return;
    const Clock::time_point now = Clock::now();
    myLastDelivery = now;
    const auto sequence = static_cast<std::uint32_t>(relay->report.x);
    myResult.deliveries->latency.Add(now - myLoad->Delivered(*sender, sequence, now));
    DrainIfSent();
    if (myPhase == Phase::Draining && myBook.Missing() == 0) EndSending();
  }

  void Left(Client&) override {
    --myOnline;
    StopIfAllLeft();
  }

  void Lost(Client& client, Client::State before, const std::string& reason) override {
    std::fprintf(stderr, "corvane-swarm: %s: %s\n", client.UserName().c_str(), reason.c_str());
    if (before < Client::State::Online) {
      ++myResult.connectFailures;
      if (myPhase == Phase::Arriving) StartLeaving();
      return;
    }
    ++myResult.disconnects;
    --myOnline;
    if (myPhase == Phase::Leaving) {
      StopIfAllLeft();
    } else if (myPhase != Phase::Sending && myPhase != Phase::Draining) {
      StartLeaving();
    }
  }

  void Wake(Clock::time_point now) override {
    switch (myPhase) {
      case Phase::Settling:
        myResult.idleRssKib = ServerRssKib();
        StartSending();
        break;
      case Phase::Sending:
        myLoad->Wake(now);
        DrainIfSent();
        break;
      case Phase::Draining:
        if (now - myLastDelivery >= kDrainTime) {
          EndSending();
        } else {
          myPool.WakeAt(myLastDelivery + kDrainTime);
        }
        break;
      case Phase::Arriving:
      case Phase::Leaving:
        break;
    }
  }

  void Interrupted() override {
    if (myPhase == Phase::Sending) {
      myLoad->Stop();
      DrainIfSent();
    } else if (myPhase == Phase::Leaving) {
      myPool.Stop();
    } else {
      StartLeaving();
    }
  }

 private:
  enum class Phase {
    Arriving,
    Settling,  // all are in; the server's memory comes to rest
    Sending,   // or, in an idle run, waiting
    Draining,  // nothing more is sent; deliveries may still arrive
    Leaving
  };

  std::unique_ptr<Load> MakeLoad(const Options& options) {
    if (options.mode == Mode::Idle) return std::make_unique<IdleLoad>(myPool);
    Senders senders{myPool, myBook, {}, options.users};
    for (const auto& client : myClients)
      senders.clients.push_back(client.get());
    if (options.mode == Mode::Fanout) {
      return std::make_unique<FanoutLoad>(std::move(senders), options.reporters, options.burst);
    }
    if (options.mode == Mode::Rate) {
      return std::make_unique<RateLoad>(std::move(senders), options.reportsPerSecond,
                                        options.burst);
    }
    const double each =
        kHonestBurstsPerSecond * double{kHonestBurst} / static_cast<double>(options.users);
    return std::make_unique<AttackedLoad>(RateLoad(std::move(senders), each, kHonestBurst),
                                          options);
  }

  void StartSending() {
    myPhase = Phase::Sending;
    if (myServer) {
      myServer->StartCpuClock();
      myServer->StartPeak();
    }
    mySendingStart = myLastDelivery = Clock::now();
    myLoad->Start(mySendingStart, myOptions.duration ? mySendingStart + *myOptions.duration
                                                     : Clock::time_point::max());
  }

  void DrainIfSent() {
    if (myPhase != Phase::Sending || !myLoad->IsDone()) return;
    myPhase = Phase::Draining;
    if (myBook.Missing() == 0) {
      EndSending();
    } else {
      myPool.WakeAt(Clock::now() + kDrainTime);
    }
  }

  void EndSending() {
    myResult.elapsed = (myResult.deliveries ? myLastDelivery : Clock::now()) - mySendingStart;
    if (myServer) {
      myResult.serverCpu = myServer->CpuTime();
      myResult.serverRssKib = myServer->RssKib();
      myResult.serverPeakKib = myServer->PeakKib();
    }
    StartLeaving();
  }

  void StartLeaving() {
    myPhase = Phase::Leaving;
    for (const auto& client : myClients) {
      const bool isOnline = client->CurrentState() == Client::State::Online;
      if (isOnline && myOptions.leave == LeaveWay::Abrupt) {
        myPool.Reset(*client);
        --myOnline;
      } else {
        myPool.Leave(*client);
      }
    }
    StopIfAllLeft();
  }

  std::optional<std::int64_t> ServerRssKib() const {
    return myServer ? myServer->RssKib() : std::nullopt;
  }

  void StopIfAllLeft() {
    if (myOnline == 0) myPool.Stop();
  }

  const Options& myOptions;
  ClientPool myPool;
  DeliveryBook myBook;
  std::vector<std::unique_ptr<Client>> myClients;
  std::unique_ptr<Load> myLoad;
  std::optional<ServerProbe> myServer;
  RunResult myResult;
  Phase myPhase = Phase::Arriving;
  std::size_t myOnline = 0;
  Clock::time_point mySendingStart;
  Clock::time_point myLastDelivery;
};

}  // namespace

RunResult RunMeasured(const Options& options) {
  return MeasuredRun(options).Execute();
}

}  // namespace corvane::swarm
