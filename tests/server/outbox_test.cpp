#include <algorithm>
#include <utility>

#include "tests/server/session_fixture.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class OutboxTest : public SessionTest {
 protected:
  // A report of the user, as if it had arrived in the current pass.
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
  // Closed sessions still get earlier reports.
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

TEST_F(OutboxTest, NewMemberMissesEarlierReports) {
  const auto ann = LoggedIn("Ann");
  const auto bob = Greeted();
  Report("Ann", 1);
  EXPECT_EQ(Ask(*bob, 1, "A"), "OK");
  Report("Ann", 2);
  EXPECT_EQ(bob->Receive(), Position("Ann", 2));

  // Also within one pass; and a member that changes its network misses nothing.
  const auto cat = Greeted();
  Report("Ann", 3);
  Receive(*server.Active(2), 1, "A");
  EXPECT_THAT(cat->Drain(), ElementsAre(WireMessage{2, "OK"}));
  Report("Ann", 4);
  Receive(*server.Active(1), 1, "B");
  EXPECT_THAT(bob->Drain(),
              ElementsAre(Position("Ann", 3), Position("Ann", 4), WireMessage{2, "OK"}));
}

TEST_F(OutboxTest, LoginAndLeaveDoNotChangeEarlierReports) {
  const auto nameless = LoggedIn("");
  const auto bob = Greeted();
  EXPECT_EQ(Ask(*bob, 1, "A"), "OK");
  EXPECT_EQ(Ask(*bob, 2, PasswordDigest("secret")), "OK");
  const auto ann = LoggedIn("Ann");
  // All in one pass. In the pool: nameless, Bob, Ann.
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

TEST_F(OutboxTest, ManyBytesAreDeliveredAtOnce) {
  const auto ann = LoggedIn(std::string(900'000, 'a'));
  std::vector<std::unique_ptr<TestClient>> others;
  for (const char* name : {"Bob", "Cat", "Dan", "Eve"})
    others.push_back(LoggedIn(name));
  const auto isGathered = [this](std::size_t reporter) {
    Report(*server.Active(reporter), ++server.Active(reporter)->X);
    return server.listener->Context.roster.HasGathered();
  };
  EXPECT_TRUE(isGathered(1));
  EXPECT_FALSE(isGathered(0));
  EXPECT_TRUE(isGathered(1)) << "delivered bytes no longer count";
}

TEST_F(OutboxTest, ReportsAreSentBeforeTheLoopWaitsOrEnds) {
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

TEST_F(OutboxTest, HalfClosedMemberStillGetsEarlierReports) {
  const auto ann = LoggedIn("Ann");
  const auto bob = LoggedIn("Bob");
  bob->EndSending();
  Report("Ann", 1);
  while (server.SessionOf("Bob")->IsConnected())
    server.SessionOf("Bob")->Poll();
  EXPECT_EQ(bob->Receive(), Position("Ann", 1));
  EXPECT_EQ(bob->Receive(), std::nullopt);
}

TEST_F(OutboxTest, DestroyedListenerSendsReportsFirst) {
  const auto ann = LoggedIn("Ann");
  const auto bob = LoggedIn("Bob");
  Report("Ann", 1);
  const std::weak_ptr<MapSocket> listener = server.listener;
  server.listener.reset();
  EXPECT_TRUE(listener.expired());
  EXPECT_EQ(bob->Receive(), Position("Ann", 1));
  EXPECT_EQ(bob->Receive(), std::nullopt);
}

TEST_F(OutboxTest, DestroyedListenerLeavesTheLoopNothingToCall) {
  const auto ann = LoggedIn("Ann");
  Report("Ann", 1);
  server.SessionOf("Ann")->FailForMemory();
  server.listener.reset();
  FlushNow(server.loop);
}

TEST_F(OutboxTest, OnlyMemberGetsEarlierReportsBeforeItIsClosed) {
  auto ann = LoggedIn("Ann");
  const auto session = server.SessionOf("Ann");
  // Reports of a session without a listener still reach its network.
  server.listener->Close();
  server.listener->Listen();
  const auto bob = LoggedIn("Bob");
  Report(*session, 1);
  server.SessionOf("Bob")->Close();
  EXPECT_EQ(bob->Receive(), Position("Ann", 1));
}

// A server whose clients read only when the test asks them to.
struct PileUp {
  explicit PileUp(const ConnectionMemory::Limits& limits) : server(0, Rules::Classic(), limits) {
    server.AddNetwork("A");
  }
  ~PileUp() { std::ranges::for_each(peers, os::CloseSocket); }

  std::shared_ptr<ClientSocket> Login(const std::string& name) {
    peers.push_back(SilentPeer(server.Port()));
    os::Send(peers.back(),
             WireBytes(1, "A") + WireBytes(2, PasswordDigest("secret")) + WireBytes(3, name));
    EXPECT_TRUE(PumpUntil([&] { return server.SessionOf(name) != nullptr; }));
    return server.SessionOf(name);
  }

  TestServer server;
  std::vector<os::SocketHandle> peers;
};

TEST(PileUp, MemberThatDoesNotReadIsCutOffAndNotTheNextSender) {
  constexpr std::size_t kBound = 8'000'000;
  PileUp pileUp({.output = kBound});
  const auto hoarder = pileUp.Login("Hoarder");
  const auto ann = pileUp.Login("Ann");
  hoarder->SendMessage(998, std::string(kBound - kFrameHeaderBytes - sizeof(Block) - 16, 'x'));
  ASSERT_TRUE(hoarder->IsConnected());
  pileUp.server.listener->BroadcastPosition(*ann);
  EXPECT_TRUE(ann->IsConnected());
  EXPECT_FALSE(hoarder->IsConnected());
}

// One member reports more than the backlog of each of the three others may hold.
TEST(PileUp, SenderWaitsWhileMostReadersAreBehind) {
  const struct {
    const char* name;
    std::size_t slow, fast, stay;
    std::chrono::milliseconds drain;
  } cases[] = {
      {"all are slow", 3, 0, 3, 1min},
      {"one does not read", 0, 2, 2, 1min},
      {"none reads", 0, 0, 0, 300ms},
  };
  constexpr int kReports = 7'000;
  const std::string name(4'000, 'n');
  std::string reports;
  for (int i = 0; i < kReports; ++i)
    reports += WireBytes(4, std::to_string(i % 2 + 1) + ",2,3,4,0,0");
  const std::size_t bytes = kReports * (WireBytes(5, name + "|1,2,3,4,0,0").size()) +
                            WireBytes(1, "Network").size() + WireBytes(2, "OK").size() * 3;
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    PileUp pileUp({.drain = row.drain});
    for (const char* other : {"Bob", "Cat", "Dan"})
      pileUp.Login(other);
    pileUp.Login(name);
    const std::size_t readers = row.slow + row.fast;
    std::vector<std::size_t> received(readers);
    std::vector<char> buffer(40'000);
    os::Send(pileUp.peers.back(), reports);
    EXPECT_TRUE(PumpUntil([&] {
      for (std::size_t i = 0; i < readers; ++i) {
        std::size_t part;
        do {
          part = os::Receive(pileUp.peers[i], buffer).bytes;
          received[i] += part;
        } while (part > 0 && i >= row.slow);
      }
      return std::ranges::all_of(received, [bytes](std::size_t sum) { return sum >= bytes; });
    }));
    EXPECT_TRUE(PumpUntil([&] { return pileUp.server.ActiveCount() == 1 + row.stay; }))
        << pileUp.server.ActiveCount() - 1;
  }
}

}  // namespace
}  // namespace corvane
