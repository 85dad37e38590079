#include "tools/swarm/hostile/stranger_pool.h"

#include <arpa/inet.h>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_server.h"

namespace corvane::swarm {
namespace {

// Sends more than a socket takes at once, then a step that leaves a trace, and stops.
class Talker : public HostilePart {
 public:
  Talker() : HostilePart({}) {
    for (int i = 0; i < 8000; ++i)
      client::AppendFrame(myBlock, 77, std::string(1000, 'x'));
  }

  void Act(Stranger& stranger) override {
    if (stranger.Turn() == 0) {
      stranger.SendFiller(myBlock, 3 * myBlock.size());
      return;
    }
    std::string step;
    client::AppendFrame(step, client::command::kNetworkName, "whole");
    stranger.Send(step);
    stranger.Hold();
  }

 private:
  std::string myBlock;
};

TEST(StrangerPool, SendsAllThatAStrangerSays) {
  TestServer server;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(server.Port()));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  Talker talker;
  StrangerPool pool(address, talker, {"", "", {INADDR_LOOPBACK + 4, 2}});
  std::jthread thread([&](const std::stop_token& stop) { pool.Run(stop); });
  EXPECT_TRUE(PumpUntil([&] {
    return testing::Matches(testing::Contains("127.0.0.5: Network Fail (whole)"))(server.status);
  }));
}

}  // namespace
}  // namespace corvane::swarm
