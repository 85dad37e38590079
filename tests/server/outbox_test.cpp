#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>
#include <vector>

#include "tests/server/session_fixture.h"
#include "tests/support/flush.h"

namespace corvane {
namespace {

using testing::ElementsAre;

class OutboxTest : public SessionTest {
 protected:
  // A report of the user, as if it had come in the pass that is under way.
  void Report(const std::string& user, std::int32_t x) { Report(*server.SessionOf(user), x); }
  void Report(ClientSocket& session, std::int32_t x) {
    session.X = x;
    server.listener->BroadcastPosition(session);
  }
  static WireMessage Position(const std::string& user, std::int32_t x) {
    return {5, user + "|" + std::to_string(x) + ",0,0,0,0,0"};
  }
};

TEST_F(OutboxTest, ReportsAndEverythingElseReachEachMemberInTheirOrder) {
  const auto ann = LoggedIn("Ann");
  const auto bob = LoggedIn("Bob");
  const auto cat = LoggedIn("Cat");
  const auto dan = LoggedIn("Dan", "B");
  const auto eve = LoggedIn("Eve", "B");
  Report("Bob", 2);
  Report("Ann", 1);
  Report("Dan", 3);
  Report("Ann", 4);
  server.listener->BroadcastMessage("hello", "A");
  Report("Bob", 5);
  Report("Bob", 6);
  server.SessionOf("Ann")->Close();
  Report("Cat", 7);
  server.SessionOf("Cat")->Close();
  Report("Bob", 8);
  Report("Dan", 9);
  server.SessionOf("Eve")->SendMessage(9, "0");

  const WireMessage hello{998, "hello"};
  EXPECT_THAT(bob->Drain(),
              ElementsAre(Position("Ann", 1), Position("Ann", 4), hello, WireMessage{6, "Ann"},
                          Position("Cat", 7), WireMessage{6, "Cat"}));
  // Those who were sent away still get what came before.
  for (const WireMessage& message :
       {Position("Bob", 2), hello, Position("Bob", 5), Position("Bob", 6)}) {
    EXPECT_EQ(ann->Receive(), message);
  }
  EXPECT_EQ(ann->Receive(), std::nullopt);
  for (const WireMessage& message :
       {Position("Bob", 2), Position("Ann", 1), Position("Ann", 4), hello, Position("Bob", 5),
        Position("Bob", 6), WireMessage{6, "Ann"}}) {
    EXPECT_EQ(cat->Receive(), message);
  }
  EXPECT_EQ(cat->Receive(), std::nullopt);
  EXPECT_THAT(dan->Drain(), ElementsAre());
  EXPECT_THAT(eve->Drain(),
              ElementsAre(Position("Dan", 3), Position("Dan", 9), WireMessage{9, "0"}));
}

TEST_F(OutboxTest, WhoeverJoinsMissesWhatWasReportedBefore) {
  const auto ann = LoggedIn("Ann");
  const auto bob = Greeted();
  Report("Ann", 1);
  EXPECT_EQ(Ask(*bob, 1, "A"), "OK");
  Report("Ann", 2);
  EXPECT_EQ(bob->Receive(), Position("Ann", 2));

  // In one pass, too; and whoever goes elsewhere misses nothing.
  const auto cat = Greeted();
  Report("Ann", 3);
  Receive(*server.Active(2), 1, "A");
  EXPECT_THAT(cat->Drain(), ElementsAre(WireMessage{2, "OK"}));
  Report("Ann", 4);
  Receive(*server.Active(1), 1, "B");
  EXPECT_THAT(bob->Drain(),
              ElementsAre(Position("Ann", 3), Position("Ann", 4), WireMessage{2, "OK"}));
}

TEST_F(OutboxTest, WhoeverTakesANameOrLeavesChangesNothingOfWhatWasReportedBefore) {
  const auto nameless = LoggedIn("");
  const auto bob = Greeted();
  EXPECT_EQ(Ask(*bob, 1, "A"), "OK");
  EXPECT_EQ(Ask(*bob, 2, PasswordDigest("secret")), "OK");
  const auto ann = LoggedIn("Ann");
  // All in one pass, as the pool of connections has them: nameless, Bob, Ann.
  Report(*server.Active(0), 1);
  Report("Ann", 2);
  Receive(*server.Active(1), 3, "Bob");
  Report(*server.Active(0), 3);
  server.SessionOf("Ann")->Close();
  EXPECT_THAT(bob->Drain(), ElementsAre(Position("Ann", 2), WireMessage{4, "OK"}, Position("", 3),
                                        WireMessage{6, "Ann"}));
  EXPECT_EQ(ann->Receive(), Position("", 1));
  EXPECT_EQ(ann->Receive(), Position("", 3));
  EXPECT_EQ(ann->Receive(), std::nullopt);
}

TEST_F(OutboxTest, MuchIsDeliveredAtOnce) {
  const auto ann = LoggedIn(std::string(900'000, 'a'));
  std::vector<std::unique_ptr<TestClient>> others;
  for (const char* name : {"Bob", "Cat", "Dan", "Eve"})
    others.push_back(LoggedIn(name));
  const auto isGathered = [this](std::size_t reporter) {
    Report(*server.Active(reporter), ++server.Active(reporter)->X);
    return server.listener->Sessions().HasGathered();
  };
  EXPECT_TRUE(isGathered(1));
  EXPECT_FALSE(isGathered(0));
  EXPECT_TRUE(isGathered(1)) << "what is delivered counts no more";
}

TEST_F(OutboxTest, WhatWasReportedIsOutBeforeTheLoopWaitsOrEnds) {
  const auto ann = LoggedIn("Ann");
  const auto bob = LoggedIn("Bob");
  const std::pair<const char*, std::function<void()>> ways[] = {
      {"wait", [&] { FlushNow(server.loop); }},
      {"end", [&] { server.loop.Finish(); }},
  };
  for (const auto& [name, way] : ways) {
    Report("Ann", 1);
    way();
    EXPECT_GT(bob->DropWhatCame(), 0U) << name;
  }
}

TEST_F(OutboxTest, WhoeverEndsItsSideStillGetsWhatWasReportedBefore) {
  const auto ann = LoggedIn("Ann");
  const auto bob = LoggedIn("Bob");
  bob->EndSending();
  Report("Ann", 1);
  while (server.SessionOf("Bob")->IsConnected())
    server.SessionOf("Bob")->Poll();
  EXPECT_EQ(bob->Receive(), Position("Ann", 1));
  EXPECT_EQ(bob->Receive(), std::nullopt);
}

TEST_F(OutboxTest, ListenerThatGoesSendsWhatWasReported) {
  const auto ann = LoggedIn("Ann");
  const auto bob = LoggedIn("Bob");
  Report("Ann", 1);
  const std::weak_ptr<MapSocket> listener = server.listener;
  server.listener.reset();
  EXPECT_TRUE(listener.expired());
  EXPECT_EQ(bob->Receive(), Position("Ann", 1));
  EXPECT_EQ(bob->Receive(), std::nullopt);
}

TEST_F(OutboxTest, OnlyMemberGetsWhatWasReportedBeforeItIsSentAway) {
  auto ann = LoggedIn("Ann");
  const auto session = server.SessionOf("Ann");
  // Reports of a session that has lost its listener still go to its network.
  server.listener->Close();
  server.listener->Listen();
  const auto bob = LoggedIn("Bob");
  Report(*session, 1);
  server.SessionOf("Bob")->Close();
  EXPECT_EQ(bob->Receive(), Position("Ann", 1));
}

// Members whose peers read only when the test has them do so, and one who reports to them.
class PileUpTest : public testing::Test {
 protected:
  explicit PileUpTest(const ConnectionMemory::Limits& limits)
      : server(0, Rules::Classic(), limits) {}
  ~PileUpTest() override { std::ranges::for_each(peers, os::CloseSocket); }

  void LogInPeer(const std::string& name) {
    peers.push_back(SilentPeer(server.Port()));
    PumpUntil([this] { return server.ActiveCount() == peers.size(); });
    os::Send(peers.back(),
             WireBytes(1, "A") + WireBytes(2, PasswordDigest("secret")) + WireBytes(3, name));
    EXPECT_TRUE(PumpUntil([&] { return server.SessionOf(name) != nullptr; }));
  }

  TestServer server;
  NetworkRef a = server.AddNetwork("A");
  std::vector<os::SocketHandle> peers;
};

class FullMemoryTest : public PileUpTest {
 protected:
  FullMemoryTest() : PileUpTest({.output = kBound}) {}
  static constexpr std::size_t kBound = 8'000'000;
};

TEST_F(FullMemoryTest, HoarderIsCutOffAndNotWhoReportsNext) {
  LogInPeer("Hoarder");
  LogInPeer("Ann");
  const auto hoarder = server.SessionOf("Hoarder");
  const auto ann = server.SessionOf("Ann");
  hoarder->SendMessage(998, std::string(kBound - kFrameHeaderBytes - sizeof(Block) - 16, 'x'));
  ASSERT_TRUE(hoarder->IsConnected());
  server.listener->BroadcastPosition(*ann);
  EXPECT_TRUE(ann->IsConnected());
  EXPECT_FALSE(hoarder->IsConnected());
}

}  // namespace
}  // namespace corvane
