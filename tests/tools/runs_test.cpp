#include "tools/swarm/runs.h"

#include <arpa/inet.h>
#include <atomic>
#include <thread>
#include <unistd.h>
#include <utility>

#include <gmock/gmock.h>

#include "tests/support/test_server.h"
#include "tools/swarm/hostile/attackers.h"

namespace corvane::swarm {
namespace {

class RunsTest : public testing::Test {
 protected:
  RunsTest() {
    Aim();
    options.networks = {"Net"};
    options.password = "secret";
    options.users = options.reporters = 4;
    options.userPrefix = "swarm";
    options.sources = {INADDR_LOOPBACK + 1, 2};
    options.duration = std::chrono::milliseconds(500);
  }

  void Aim() {
    options.server.sin_family = AF_INET;
    options.server.sin_port = htons(static_cast<std::uint16_t>(server.Port()));
    options.server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  }

  // Executes the run on another thread and the server on this one. Calls `meanwhile` once the
  // server has raised that many events.
  template <typename Result>
  Result Execute(
      Result (*run)(const Options&), std::size_t events = 0,
      const std::function<void()>& meanwhile = [] {}) {
    std::optional<Result> result;
    std::atomic<bool> isOver = false;
    std::thread swarm([&] {
      result = run(options);
      isOver = true;
    });
    if (PumpUntil([&] { return isOver || server.events.size() >= events; })) meanwhile();
    EXPECT_TRUE(PumpUntil([&] { return isOver.load(); }));
    swarm.join();
    return *result;
  }

  TestServer server;
  Options options;
};

TEST_F(RunsTest, ChurnCountsEachVisit) {
  const NetworkRef network = server.AddNetwork("Net");
  options.mode = Mode::Churn;
  for (const LeaveWay way : {LeaveWay::Orderly, LeaveWay::Abrupt}) {
    server.events.clear();
    options.leave = way;
    const RunResult result = Execute(RunChurn);
    EXPECT_TRUE(result.IsGood()) << result.ToText();
    EXPECT_GT(result.visits, options.users) << "clients come back";
    const std::size_t visits = result.visits.value_or(0);
    EXPECT_TRUE(PumpUntil([&] { return server.events.size() == 2 * visits; }))
        << visits << " visits, " << server.events.size() << " events";
  }
  for (const char* const address : {"127.0.0.2", "127.0.0.3"})
    EXPECT_THAT(server.status,
                testing::Contains(address + std::string(": Client Connection Initiated...")));
}

TEST_F(RunsTest, ChurnFailsIfAClientIsRefused) {
  server.AddNetwork("Net", "secret", 1);
  options.mode = Mode::Churn;
  const RunResult result = Execute(RunChurn);
  EXPECT_FALSE(result.IsGood());
  EXPECT_GT(result.connectFailures, 0U);
}

TEST_F(RunsTest, IdleFailsOnlyIfAMessageComes) {
  server.AddNetwork("Net");
  TestClient other(server.Port());
  ASSERT_TRUE(other.Login("Net", "secret", "other"));
  options.mode = Mode::Idle;
  EXPECT_TRUE(Execute(RunMeasured).IsGood());
  ASSERT_TRUE(PumpUntil([&] { return server.ActiveCount() == 1; }));

  server.events.clear();
  const RunResult disturbed = Execute(RunMeasured, 1, [&] { other.Send(4, "1200,845,2,90,1,0"); });
  EXPECT_FALSE(disturbed.IsGood());
  EXPECT_GT(disturbed.unexpected, 0U);
}

TEST_F(RunsTest, RushCountsGreetedRefusedAndHungClients) {
  server.listener->SetMaximumSocketsConnected(10);
  server.listener->Listen();
  Aim();
  options.clients = 15;
  options.rounds = 2;
  const RushResult full = Execute(RunRush);
  EXPECT_FALSE(full.IsGood());
  ASSERT_EQ(full.rounds.size(), 2U);
  EXPECT_EQ(full.rounds[0].greeted, 10U);
  EXPECT_EQ(full.rounds[0].refused, 5U);
  ASSERT_TRUE(PumpUntil([&] { return server.ActiveCount() == 0; }));

  options.clients = 10;
  options.rounds = 1;
  EXPECT_TRUE(Execute(RunRush).IsGood());

  server.Query(
      "INSERT INTO bans (address, \"by\", reason, bandate, banlength, network)"
      " VALUES ('127.0.0.1', 'Server Admin', '', '2026-02-03 21:14:09', 1, 'Net')");
  EXPECT_EQ(Execute(RunRush).rounds[0].refused, 10U) << "a ban notice is no greeting";

  options.duration = std::chrono::milliseconds(50);
  const RushResult hung = RunRush(options);
  EXPECT_FALSE(hung.IsGood()) << "the server did not run";
  EXPECT_EQ(hung.Hung(hung.rounds[0]), 10U);
}

TEST_F(RunsTest, HostileRunCountsHonestMembersOnly) {
  server.AddNetwork("Net", "secret", 20);
  TestClient stranger(server.Port());
  ASSERT_TRUE(stranger.Login("Net", "secret", std::string(kStrangerPrefix) + " of ours"));
  server.events.clear();
  options.mode = Mode::Hostile;
  options.duration = std::chrono::milliseconds(3'000);
  options.attack = FindAttack("tiny-messages");
  options.serverPid = getpid();
  const RunResult result =
      Execute(RunMeasured, options.users, [&] { stranger.Send(4, "1200,845,2,90,1,0"); });
  EXPECT_TRUE(result.IsGood()) << result.ToText();
  ASSERT_TRUE(result.hostile && result.deliveries);
  EXPECT_EQ(result.hostile->strangers.acted, 10U);
  std::uint64_t counted = 0;
  for (const AttackResult::Window& window : result.hostile->windows) {
    EXPECT_GT(window.latency.Count(), 0U);
    EXPECT_TRUE(window.serverWait);
    counted += window.latency.Count();
  }
  EXPECT_EQ(counted, result.deliveries->expected);
  EXPECT_GE(result.serverPeakKib, result.serverRssKib);
}

TEST_F(RunsTest, HostileRunFailsIfStrangersCannotLogin) {
  server.AddNetwork("Net");
  options.mode = Mode::Hostile;
  options.strangersNetwork = "unknown";
  options.attack = FindAttack("slow-writers");
  const RunResult result = Execute(RunMeasured);
  EXPECT_FALSE(result.IsGood());
  ASSERT_TRUE(result.hostile && result.deliveries);
  EXPECT_EQ(result.hostile->strangers.acted, 0U);
  EXPECT_EQ(result.deliveries->missing, 0U) << result.ToText();
}

TEST_F(RunsTest, StrangerComesBackAndSendsAllItsOutput) {
  std::string block;  // more than a socket takes at once
  for (int i = 0; i < 8000; ++i)
    client::AppendFrame(block, 77, std::string(1000, 'x'));
  std::string step;
  client::AppendFrame(step, client::command::kNetworkName, "whole");
  bool hasHungUp = false;
  const auto act = [&](Client& stranger) {
    if (!std::exchange(hasHungUp, true)) {
      stranger.HangUp();
    } else if (stranger.Turn() == 0) {
      stranger.SendFiller(block, 3 * block.size());
    } else {
      stranger.Send(step);
      stranger.Hold();
    }
  };
  options.strangersSources = {INADDR_LOOPBACK + 4, 2};
  Attackers attackers(options, {.act = act});
  attackers.Start();
  EXPECT_TRUE(PumpUntil([&] {
    return testing::Matches(testing::Contains("127.0.0.5: Network Fail (whole)"))(server.status);
  }));
}

}  // namespace
}  // namespace corvane::swarm
