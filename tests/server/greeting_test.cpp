
#include "tests/server/session_fixture.h"
#include "tests/support/web_server.h"

namespace corvane {
namespace {

const std::string kPage = "/IpLocator.htm?GetLocation&template=php3.txt&IpAddress=127.0.0.1";

class GreetingTest : public SessionTest {
 protected:
  std::unique_ptr<TestClient> Connected() { return std::make_unique<TestClient>(server.Port()); }

  WebServer web;
};

TEST_F(GreetingTest, WaitsForAHangingLocatorWhileOthersAreServed) {
  // More than the number of simultaneous lookups.
  constexpr int kCount = 60;
  a->MaxUsers = 100;
  const auto ann = LoggedIn("Ann");
  const auto bob = LoggedIn("Bob");
  web.answers[kPage] = {"", false};
  server.locations.SetServices(web.Address(), "");
  std::vector<std::unique_ptr<TestClient>> newcomers;
  for (int i = 0; i < kCount; ++i) {
    newcomers.push_back(Connected());
    newcomers.back()->Send(1, "A");
  }
  ann->Send(4, "1,2,3,4,0,0");
  EXPECT_EQ(bob->Receive(), (WireMessage{5, "Ann|1,2,3,4,0,0"}));
  ASSERT_EQ(server.ActiveCount(), 2U + kCount);
  for (std::size_t i = 2; i < server.ActiveCount(); ++i) {
    EXPECT_EQ(server.Active(i)->LoginState(), ClientSocket::State::Greeting);
  }
  for (const auto& newcomer : newcomers) {
    EXPECT_EQ(newcomer->Receive(), (WireMessage{1, "Network"}));
    EXPECT_EQ(newcomer->Receive(), (WireMessage{2, "OK"}));
  }
}

TEST_F(GreetingTest, ClientThatLeavesDuringTheLookupIsNotGreeted) {
  web.answers[kPage] = {OkReply(""), true, true};
  server.locations.SetServices(web.Address(), "");
  const auto left = Connected();
  const auto closed = Connected();
  ASSERT_TRUE(PumpUntil([this] { return web.requests.size() == 2; }));
  left->Close();
  const auto session = server.Active(1);
  session->Close();
  EXPECT_TRUE(PumpUntil([this] { return server.ActiveCount() == 0; }));
  web.AnswerHeld();
  web.answers[kPage].isHeld = false;
  PumpFor(std::chrono::milliseconds(100));
  EXPECT_EQ(session->LoginState(), ClientSocket::State::Gone);
  EXPECT_EQ(closed->Receive(), std::nullopt);
  EXPECT_TRUE(server.uncaught.empty());
  Greeted();
}

}  // namespace
}  // namespace corvane
