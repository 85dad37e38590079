#include "net/poll_loop.h"

#include "framework/exceptions.h"
#include "tests/net/recording_server.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class GiveWayTest : public NetTest {
 protected:
  GiveWayTest() {
    server->Listen();
    first = Connect();
    second = Connect();
    server->log.clear();
  }

  // Walks over elements until `count` events are logged, or the timeout has passed.
  void WalkUntilLogged(std::size_t count, std::chrono::milliseconds timeout = 5s) {
    const auto end = PollLoop::Clock::now() + timeout;
    while (server->log.size() < count && PollLoop::Clock::now() < end)
      loop.GiveWay();
  }

  std::unique_ptr<TestClient> first;
  std::unique_ptr<TestClient> second;
};

TEST_F(GiveWayTest, LongWalkServesTheOthersButNotItsOwnSession) {
  server->Active(0)->whenReceived = [this](std::int32_t command, std::string_view) {
    if (command != 1) return;
    second->SendBytes(WireBytes(5, "meanwhile"));
    WalkUntilLogged(2);
    server->log.emplace_back("walked");
  };
  first->SendBytes(WireBytes(1, "walk") + WireBytes(2, "own"));
  EXPECT_TRUE(PumpUntil([this] { return server->log.size() >= 4; }));
  const std::string one = std::to_string(server->Active(0)->Number());
  const std::string other = std::to_string(server->Active(1)->Number());
  EXPECT_THAT(server->log,
              ElementsAre(one + " 1 walk", other + " 5 meanwhile", "walked", one + " 2 own"));
}

TEST_F(GiveWayTest, NestsOneLevelDeepAndSendsAnswers) {
  const auto third = Connect();
  server->log.clear();
  bool nestedWalkWasServed = false;
  std::size_t answered = 0;
  server->Active(0)->whenReceived = [&](std::int32_t, std::string_view) {
    second->SendBytes(WireBytes(5, ""));
    WalkUntilLogged(2);
    // The nested pass has sent the other's answer, though this handler has not returned.
    answered = second->DropWhatCame();
  };
  server->Active(1)->whenReceived = [&](std::int32_t, std::string_view) {
    server->Active(1)->SendMessage(6, "answer");
    third->SendBytes(WireBytes(7, ""));
    const std::size_t before = server->log.size();
    WalkUntilLogged(before + 1, 100ms);
    nestedWalkWasServed = server->log.size() != before;
  };
  first->SendBytes(WireBytes(1, ""));
  EXPECT_TRUE(PumpUntil([this] { return server->log.size() >= 3; }));
  EXPECT_GT(answered, 0U);
  EXPECT_FALSE(nestedWalkWasServed);
}

TEST_F(GiveWayTest, SessionThatWalksGetsItsOwnEndAfterwards) {
  server->Active(0)->whenReceived = [this](std::int32_t, std::string_view) {
    first->Abort();
    second->SendBytes(WireBytes(5, ""));
    WalkUntilLogged(2);
    WalkUntilLogged(3, 100ms);
    server->log.emplace_back("walked");
  };
  first->SendBytes(WireBytes(1, ""));
  EXPECT_TRUE(PumpUntil([this] { return server->log.size() >= 4; }));
  EXPECT_EQ(server->log[2], "walked");
  EXPECT_THAT(server->log[3], testing::HasSubstr("error"));
}

TEST_F(GiveWayTest, QtGetsItsTurnWhileManyEndAtOnce) {
  constexpr std::size_t kMany = 8;
  while (server->ActiveCount() < kMany)
    rush.push_back(ConnectSilent());
  int turns = 0;
  QTimer everyTurn;
  QObject::connect(&everyTurn, &QTimer::timeout, [&] { ++turns; });
  std::vector<int> turnsAtEnds;
  for (std::size_t i = 0; i < kMany; ++i) {
    server->Active(i)->whenEnded = [&] {
      turnsAtEnds.push_back(turns);
      std::this_thread::sleep_for(5ms);
    };
  }
  first->Abort();
  second->Abort();
  std::ranges::for_each(std::exchange(rush, {}), os::CloseSocket);
  everyTurn.start(0);
  EXPECT_TRUE(PumpUntil([&] { return turnsAtEnds.size() == kMany; }));
  EXPECT_GE(turnsAtEnds.back() - turnsAtEnds.front(), static_cast<int>(kMany) / 2);
}

TEST_F(GiveWayTest, OutputThatAFlushHasNoTimeForLeavesWithTheNext) {
  std::shared_ptr<void> slowEnd(nullptr, [](void*) { std::this_thread::sleep_for(20ms); });
  server->Active(1)->whenReceived = [end = std::move(slowEnd)](std::int32_t, std::string_view) {};
  server->Active(0)->whenReceived = [this](std::int32_t, std::string_view) {
    server->Active(1)->SendMessage(6, "");
    server->Active(0)->SendMessage(7, "");
    // The flush destroys it, which takes all of the flush's time.
    server->Active(1)->Close();
  };
  first->Send(1, "");
  EXPECT_EQ(first->Receive(), (WireMessage{7, ""}));
}

TEST(WatchList, ReadinessOfASocketThatIsGoneFindsNone) {
  PollLoop loop([] {});
  const auto socket = std::make_shared<TCPSocket>(loop);
  WatchList list;
  const std::uint64_t old = list.Add(*socket);
  EXPECT_EQ(list.Find(old), socket.get());
  list.Remove(old);
  EXPECT_EQ(list.Find(old), nullptr);
  const std::uint64_t next = list.Add(*socket);
  EXPECT_EQ(list.Find(next), socket.get());
  EXPECT_EQ(list.Find(old), nullptr) << "its place was reused";
  list.Remove(next);
}

TEST_F(GiveWayTest, SessionThatEndsDuringAWalkStaysValidInIt) {
  const auto walked = server->ActiveConnections();
  server->Active(0)->whenReceived = [&](std::int32_t, std::string_view) {
    second->Abort();
    WalkUntilLogged(2);
    for (const auto& connection : *walked) {
      std::static_pointer_cast<RecordingSocket>(connection)->SendMessage(8, "");
    }
  };
  first->Send(1, "");
  EXPECT_EQ(first->Receive(), (WireMessage{8, ""}));
  EXPECT_EQ(walked->size(), 2U);
  EXPECT_EQ(server->ActiveCount(), 1U);
}

TEST(PollLoop, ErrorOfAHandlerReachesTheLastResortAndStoppingHolds) {
  std::vector<std::string> caught;
  PollLoop* stopped = nullptr;
  PollLoop loop([&] {
    caught.push_back(ClassNameOf(std::current_exception()));
    stopped->Finish();
  });
  stopped = &loop;
  const auto server = std::make_shared<RecordingServer>(loop, 2, 10);
  server->Listen();
  TestClient client(server->Port());
  ASSERT_TRUE(PumpUntil([&] { return server->ActiveCount() == 1; }));
  server->Active(0)->whenReceived = [](std::int32_t, std::string_view) {
    throw NilObjectException();
  };
  client.SendBytes(WireBytes(1, "") + WireBytes(2, ""));
  EXPECT_TRUE(PumpUntil([&] { return !caught.empty(); }));
  const std::size_t before = server->log.size();
  client.Send(3, "");
  PumpFor(100ms);
  EXPECT_THAT(caught, ElementsAre("NilObjectException"));
  EXPECT_EQ(server->log.size(), before);
}

}  // namespace
}  // namespace corvane
