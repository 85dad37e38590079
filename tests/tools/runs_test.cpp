#include <arpa/inet.h>
#include <atomic>
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/test_server.h"
#include "tools/swarm/churn_run.h"
#include "tools/swarm/measured_run.h"

namespace corvane::swarm {
namespace {

class RunsTest : public testing::Test {
 protected:
  RunsTest() {
    options.server.sin_family = AF_INET;
    options.server.sin_port = htons(static_cast<std::uint16_t>(server.Port()));
    options.server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    options.networks = {"Net"};
    options.password = "secret";
    options.users = 4;
    options.connectAtOnce = 2;
    options.userPrefix = "swarm";
    options.duration = std::chrono::milliseconds(500);
  }

  // The run on a thread of its own, the server on this one. `meanwhile` is called when the server
  // has raised so many events.
  template <typename Run>
  RunResult Execute(
      std::size_t events = 0, const std::function<void()>& meanwhile = [] {}) {
    RunResult result;
    std::atomic<bool> isOver = false;
    std::thread swarm([&] {
      result = Run(options).Execute();
      isOver = true;
    });
    if (PumpUntil([&] { return isOver || server.events.size() >= events; })) meanwhile();
    EXPECT_TRUE(PumpUntil([&] { return isOver.load(); }));
    swarm.join();
    return result;
  }

  TestServer server;
  Options options;
};

TEST_F(RunsTest, ChurnCountsEachLogInThatWasFollowedByALeave) {
  const NetworkRef network = server.AddNetwork("Net");
  options.mode = Mode::Churn;
  for (const LeaveWay way : {LeaveWay::Orderly, LeaveWay::Abrupt}) {
    server.events.clear();
    options.leave = way;
    const RunResult result = Execute<ChurnRun>();
    EXPECT_TRUE(result.IsGood()) << result.ToText();
    EXPECT_GT(result.visits, options.users) << "they come back";
    const std::size_t visits = result.visits.value_or(0);
    EXPECT_TRUE(PumpUntil([&] { return server.events.size() == 2 * visits; }))
        << visits << " visits, " << server.events.size() << " events";
  }
}

TEST_F(RunsTest, ChurnFailsWhenAClientIsRefused) {
  server.AddNetwork("Net", "secret", 1);
  options.mode = Mode::Churn;
  const RunResult result = Execute<ChurnRun>();
  EXPECT_FALSE(result.IsGood());
  EXPECT_GT(result.connectFailures, 0U);
}

TEST_F(RunsTest, IdleFailsOnlyWhenSomethingComes) {
  server.AddNetwork("Net");
  TestClient other(server.Port());
  ASSERT_TRUE(other.LogIn("Net", "secret", "other"));
  options.mode = Mode::Idle;
  EXPECT_TRUE(Execute<MeasuredRun>().IsGood());
  ASSERT_TRUE(PumpUntil([&] { return server.ActiveCount() == 1; }));

  server.events.clear();
  const RunResult disturbed = Execute<MeasuredRun>(1, [&] { other.Send(4, "1200,845,2,90,1,0"); });
  EXPECT_FALSE(disturbed.IsGood());
  EXPECT_GT(disturbed.unexpected, 0U);
}

}  // namespace
}  // namespace corvane::swarm
