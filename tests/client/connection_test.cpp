#include "client/connection.h"

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "client/password_digest.h"
#include "tests/support/false_server.h"
#include "tests/support/test_server.h"

namespace corvane::client {
namespace {

using testing::ElementsAre;
using Cause = Ending::Cause;
using State = Connection::State;
using std::chrono::milliseconds;
using std::chrono::seconds;

class ConnectionTest : public testing::Test {
 protected:
  explicit ConnectionTest(Connection::Timing timing = {milliseconds(20), milliseconds(50),
                                                       seconds(30), seconds(30)})
      : connection(timing) {
    ended = connection.SessionEnded.Connect(
        [this](const Ending& ending) { endings.push_back(ending.cause); });
    connection.MessageReceived = [this](std::string_view text) { messages.emplace_back(text); };
    received = connection.BansReceived.Connect([this](const BanList& list) { bans = list.bans; });
  }

  void Open(std::int32_t port) {
    connection.Open({"127.0.0.1",
                     static_cast<std::uint16_t>(port),
                     {"North", client::PasswordDigest("secret"), "Ann"}});
  }
  bool Reaches(State state) {
    return PumpUntil([&] { return connection.CurrentState() == state; });
  }
  bool IsLetIn(FalseServer& server) {
    if (!server.Accept()) return false;
    server.LetIn();
    return Reaches(State::Online);
  }
  // Whether it gets online and has the answers to its requests.
  bool IsSettled() {
    return Reaches(State::Online) &&
           PumpUntil([&] { return connection.IsAdministrator() == isAdministrator; });
  }

  std::vector<Cause> endings;
  std::vector<std::string> messages;
  std::vector<Ban> bans;
  bool isAdministrator = false;
  Connection connection;
  SignalConnection ended;
  SignalConnection received;
};

class AskingConnectionTest : public ConnectionTest {
 protected:
  AskingConnectionTest()
      : ConnectionTest({milliseconds(20), milliseconds(50), milliseconds(300), seconds(30)}) {}
};

// Reconnects only by RetryNow.
class PatientConnectionTest : public ConnectionTest {
 protected:
  PatientConnectionTest()
      : ConnectionTest({seconds(20), seconds(50), seconds(30), seconds(1), seconds(1)}) {}
};

TEST_F(AskingConnectionTest, FollowsTheOthersAndActsAsAnAdministrator) {
  TestServer server;
  server.AddNetwork("North");
  server.Query("INSERT INTO admins (name, address, network) VALUES ('Ann','127.0.0.1','North')");
  TestClient bob(server.Port());
  ASSERT_TRUE(bob.Login("North", "secret", "Bob"));
  bob.Send(4, "1,2,3,4,0,0");
  isAdministrator = true;
  Open(server.Port());
  ASSERT_TRUE(IsSettled());
  const Member* member = connection.Others().Find("bob");
  ASSERT_NE(member, nullptr);
  bob.Send(4, "5,2,3,4,1,1");
  EXPECT_TRUE(PumpUntil([&] { return member->report == Report{5, 2, 3, 4, true, true}; }));
  // The list brings a new member that has not reported.
  TestClient cy(server.Port());
  ASSERT_TRUE(cy.Login("North", "secret", "Cy"));
  EXPECT_TRUE(PumpUntil([&] { return connection.Others().Find("Cy") != nullptr; }));
  cy.Close();
  EXPECT_TRUE(PumpUntil([&] { return connection.Others().Find("Cy") == nullptr; }));

  bob.Drain();
  connection.Send({9, 8, 7, 6, false, false});
  EXPECT_EQ(bob.Receive(), (WireMessage{5, "Ann|9,8,7,6,0,0"}));
  connection.Kick("bob");
  EXPECT_EQ(bob.Receive(), (WireMessage{996, "North"}));
  connection.BanUser("Bob", "spam");
  EXPECT_EQ(bob.Receive(), (WireMessage{997, "spam"}));
  connection.SendMessage("Hello");
  EXPECT_TRUE(PumpUntil([&] { return messages == std::vector<std::string>{"Hello"}; }));
  connection.AskForBans();
  ASSERT_TRUE(PumpUntil([&] { return bans.size() == 1; }));
  EXPECT_EQ(bans[0].reason, "spam");
  connection.LiftBan(bans[0].id);
  EXPECT_TRUE(PumpUntil([&] { return server.Query("SELECT count(*) FROM bans") == "0;"; }));

  connection.Close();
  EXPECT_FALSE(connection.IsAdministrator());
  EXPECT_EQ(connection.Others().Count(), 0U);
  EXPECT_TRUE(PumpUntil([&] { return server.SessionOf("Ann") == nullptr; }));
  EXPECT_THAT(endings, ElementsAre(Cause::Left));
}

TEST_F(ConnectionTest, ReconnectsToARestartedServer) {
  auto server = std::make_unique<TestServer>();
  server->AddNetwork("North");
  const std::int32_t port = server->Port();
  Open(port);
  ASSERT_TRUE(IsSettled());
  server.reset();
  ASSERT_TRUE(Reaches(State::Waiting));
  // Longer than some delays, so at least one attempt fails.
  ASSERT_TRUE(PumpUntil([&] { return endings.size() >= 3; }));
  server = std::make_unique<TestServer>(port);
  server->AddNetwork("North");
  ASSERT_TRUE(IsSettled());
  EXPECT_EQ(endings.front(), Cause::Lost);
  EXPECT_EQ(endings.back(), Cause::Unreachable);
}

TEST_F(PatientConnectionTest, DelaysGrowUntilItIsOnlineAgain) {
  FalseServer server;
  Open(server.Port());
  std::vector<std::int64_t> tensOfSeconds;
  for (const bool letsIn : {true, false, false, true}) {
    ASSERT_TRUE(server.Accept());
    if (letsIn) {
      server.LetIn();
      ASSERT_TRUE(Reaches(State::Online));
    }
    server.HangUp();
    ASSERT_TRUE(Reaches(State::Waiting));
    tensOfSeconds.push_back((connection.RetryIn() + seconds(5)) / seconds(10));
    connection.RetryNow();
  }
  EXPECT_THAT(tensOfSeconds, ElementsAre(2, 4, 5, 2));
  EXPECT_THAT(endings, ElementsAre(Cause::Lost, Cause::NotGreeted, Cause::NotGreeted, Cause::Lost));
}

TEST_F(PatientConnectionTest, OnlyTheLoginHasATimeLimit) {
  FalseServer server;
  Open(server.Port());
  for (const bool greets : {true, false}) {
    ASSERT_TRUE(server.Accept());
    if (greets) server.Send(WireBytes(1, "Network"));
    ASSERT_TRUE(Reaches(State::Offline)) << "it never was online";
    Open(server.Port());
  }
  EXPECT_THAT(endings, ElementsAre(Cause::Silent, Cause::NotGreeted));
  ASSERT_TRUE(IsLetIn(server));
  PumpFor(milliseconds(1200));
  EXPECT_EQ(connection.CurrentState(), State::Online);
}

TEST_F(ConnectionTest, DoesNotReconnectAfterAKickABanOrBye) {
  for (const std::int32_t command : {996, 997, 999}) {
    FalseServer server;
    Open(server.Port());
    ASSERT_TRUE(IsLetIn(server));
    // The reason is read even behind many other bytes.
    server.Send(WireBytes(998, std::string(100'000, 'x')) + WireBytes(command, "go"));
    server.HangUp();
    ASSERT_TRUE(PumpUntil([&] { return connection.CurrentState() != State::Online; }));
    EXPECT_EQ(connection.CurrentState(), State::Offline) << command;
    EXPECT_TRUE(PumpUntil([&] { return !server.HasClient(); })) << command;
  }
  EXPECT_THAT(endings, ElementsAre(Cause::Kicked, Cause::Banned, Cause::Dismissed));
}

TEST_F(AskingConnectionTest, GivesUpAServerThatStopsAnswering) {
  FalseServer server;
  Open(server.Port());
  ASSERT_TRUE(IsLetIn(server));
  ASSERT_TRUE(PumpUntil([&] { return !endings.empty(); }));
  EXPECT_THAT(endings, ElementsAre(Cause::Silent));
  EXPECT_EQ(connection.CurrentState(), State::Waiting);
  connection.Close();
  EXPECT_EQ(connection.CurrentState(), State::Offline);
  EXPECT_EQ(connection.RetryIn(), seconds(0));
}

// A handler may call any method.
TEST_F(ConnectionTest, CanBeReopenedByAHandler) {
  FalseServer first;
  FalseServer second;
  connection.MessageReceived = [&](std::string_view) { Open(second.Port()); };
  Open(first.Port());
  ASSERT_TRUE(IsLetIn(first));
  first.Send(WireBytes(998, "go") + WireBytes(5, "Bob|1,2,3,4,0,0"));
  ASSERT_TRUE(IsLetIn(second));
  EXPECT_EQ(connection.Others().Count(), 0U);

  for (const State at : {State::Connecting, State::LoggingIn, State::Online}) {
    const SignalConnection changed = connection.StateChanged.Connect([&] {
      if (connection.CurrentState() == at) connection.Close();
    });
    Open(second.Port());
    if (at != State::Connecting) {
      ASSERT_TRUE(second.Accept());
      second.LetIn();
    }
    EXPECT_TRUE(Reaches(State::Offline));
    PumpFor(milliseconds(50));
    EXPECT_EQ(connection.CurrentState(), State::Offline);
  }
}

}  // namespace
}  // namespace corvane::client
