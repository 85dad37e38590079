#include "server/client_socket.h"

#include <thread>

#include "tests/server/session_fixture.h"
#include "tests/support/socket_errors.h"

namespace corvane {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

using ClientSocketTest = SessionTest;

TEST_F(ClientSocketTest, AnswersEachLoginStep) {
  struct Step {
    std::int32_t command;
    std::string payload;
    std::string answer;
    std::int32_t seats;      // in the network afterwards
    std::string statusLine;  // how the new status line ends; empty: none
  };
  const std::vector<Step> dialogues[] = {
      {{1, "nowhere", "FAIL", 0, "Network Fail (nowhere)"},
       {2, PasswordDigest("secret"), "FAIL", 0, "Login Failed."},
       {1, "Closed", "FAIL", 0, "Network Fail (Closed)"},
       {2, PasswordDigest("secret"), "FAIL", 0, "Login Failed."},
       {1, "A", "OK", 1, ""},
       {1, "nowhere", "FAIL", 0, "Network Fail (nowhere)"},
       {2, PasswordDigest("secret"), "FAIL", 0, "Login Failed."}},
      // A network that is chosen again keeps one seat.
      {{1, "A", "OK", 1, ""},
       {1, "A", "OK", 1, ""},
       {1, "B", "OK", 0, ""},
       {1, "", "FAIL", 0, "Network Fail ()"}},
      // A name before the password changes nothing; a wrong password loses the seat, and the right
      // one takes it again.
      {{3, "Ann", "FAIL", 0, "Bad Username (Ann)"},
       {1, "A", "OK", 1, ""},
       {3, "Ann", "FAIL", 1, "Bad Username (Ann)"},
       {2, "", "FAIL", 0, "Login Failed."},
       {2, std::string(100, 'x'), "FAIL", 0, "Login Failed."},
       {2, PasswordDigest("Secret"), "FAIL", 0, "Login Failed."},
       {3, "Ann", "FAIL", 0, "Bad Username (Ann)"},
       {2, PasswordDigest("secret"), "OK", 1, ""},
       {2, "wrong", "FAIL", 0, "Login Failed."},
       {3, "Ann", "FAIL", 0, "Bad Username (Ann)"}},
      // After the login no step changes anything.
      {{1, "a", "OK", 1, ""},
       {2, "5EBE2294ecd0e0f08eab7690d2a6ee69", "OK", 1, ""},
       {3, "Ann", "OK", 1, "User Logged In (Ann)"},
       {1, "B", "FAIL", 1, "Network Fail (B)"},
       {2, PasswordDigest("secret"), "FAIL", 1, "Login Failed."},
       {3, "Bob", "FAIL", 1, "Bad Username (Bob)"}}};
  a->MaxUsers = 1;
  server.AddNetwork("Closed", "secret", 10, false);
  for (const auto& dialogue : dialogues) {
    const auto client = Greeted();
    for (const Step& step : dialogue) {
      SCOPED_TRACE(std::to_string(&dialogue - dialogues) + ": " + step.payload);
      server.status.clear();
      EXPECT_EQ(Ask(*client, step.command, step.payload), step.answer);
      EXPECT_EQ(a->CurrentUsers, step.seats);
      std::vector<std::string> lines;
      if (!step.statusLine.empty()) lines.push_back("127.0.0.1: " + step.statusLine);
      EXPECT_EQ(server.status, lines);
    }
    client->Close();
    EXPECT_TRUE(PumpUntil([this] { return server.ActiveCount() == 0; }));
    EXPECT_EQ(a->CurrentUsers, 0);
  }
}

TEST_F(ClientSocketTest, EachFailedStepAfterTheTenthDelaysTheNextLonger) {
  const auto guesser = Greeted();
  const auto other = Greeted();
  guesser->Send(1, "A");
  other->Send(1, "A");
  for (std::size_t i = 0; i < 2; ++i)
    TakeIn(*server.Active(i));
  // Qt's loop does not run, so no delay ends here.
  ClientSocket& session = *server.Active(0);
  const auto freeSteps = [&] {
    int count = 0;
    for (; session.IsDue(); ++count)
      Receive(session, 1, "nowhere");
    return count - 1;
  };
  for (int i = 0; i < 10; ++i)
    Receive(session, 3, "too early");
  Receive(session, 1, "A");
  Receive(session, 2, PasswordDigest("secret"));
  Receive(session, 3, "Ann");
  EXPECT_EQ(freeSteps(), 10) << "a login resets the count";
  EXPECT_TRUE(server.Active(1)->IsDue()) << "no other session waits";

  std::string guesses = WireBytes(1, "B");
  for (int i = 0; i < 30; ++i)
    guesses += WireBytes(2, "guess " + std::to_string(i));
  EXPECT_EQ(other->Receive(), (WireMessage{2, "OK"}));
  const auto begin = std::chrono::steady_clock::now();
  other->SendBytes(guesses);
  other->EndSending();
  EXPECT_EQ(other->Receive(), (WireMessage{2, "OK"}));
  for (int i = 0; i < 30; ++i)
    EXPECT_EQ(other->Receive(), (WireMessage{3, "FAIL"})) << i;
  EXPECT_GE(std::chrono::steady_clock::now() - begin,
            std::chrono::milliseconds(4 + 8 + 16 + 32 + 64 + 128 + 13 * 250));
}

TEST_F(ClientSocketTest, CostlyQuestionsShareATenthOfTheTime) {
  std::string rows;
  for (int i = 0; i < 200; ++i)
    rows += "INSERT INTO admins (name, network, address) VALUES ('x', 'y', 'z');";
  server.Query("BEGIN;" + rows + "COMMIT;");
  const std::string costly =
      "nobody' OR EXISTS (SELECT 1 FROM admins a, admins b, admins c, admins d "
      "WHERE a.id + b.id + c.id + d.id < 0) OR '1'='";
  const auto first = LoggedIn(costly + "2");
  const auto second = LoggedIn(costly + "3");
  const auto ann = LoggedIn("Ann");
  const auto oneil = LoggedIn("O'Neil");
  const auto begin = std::chrono::steady_clock::now();
  for (TestClient* const asking : {first.get(), second.get()})
    asking->SendBytes(WireBytes(9, "") + WireBytes(9, ""));
  // Each is cancelled after 20 ms and delays the next.
  for (TestClient* const asking : {first.get(), first.get(), second.get(), second.get()})
    EXPECT_EQ(asking->Receive(), (WireMessage{9, "0"}));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(3 * 180));

  server.listener->Context.costlyQuestions.Charge(std::chrono::minutes(1));
  first->Send(9, "");
  for (TestClient* const asking : {ann.get(), oneil.get(), oneil.get()}) {
    asking->Send(9, "");
    EXPECT_EQ(asking->Receive(), (WireMessage{9, "0"})) << "a quote alone is harmless";
  }
  EXPECT_TRUE(first->HearsNothing());
}

TEST_F(ClientSocketTest, ListsOfMembersTakeTurns) {
  const auto large = LoggedIn(std::string(300'000, 'n'));
  const auto ann = LoggedIn("Ann");
  Turns& turns = server.listener->Context.memberLists;
  const auto begin = PollLoop::Clock::now();
  turns.Take(std::chrono::milliseconds(100));
  ann->SendBytes(WireBytes(5, "") + WireBytes(999, ""));
  large->Send(999, "");
  EXPECT_EQ(large->Receive()->command, 999) << "others are served meanwhile";
  EXPECT_EQ(ann->Receive()->command, 5);
  const auto turn = PollLoop::Clock::now();
  EXPECT_GE(turn - begin, std::chrono::milliseconds(300));
  EXPECT_GT(turns.Take({}), begin + std::chrono::milliseconds(300)) << "the long name is charged";
  EXPECT_EQ(ann->Receive()->command, 999);
}

TEST_F(ClientSocketTest, FullNetworkHasNoSeatAtAnyStep) {
  a->MaxUsers = 1;
  const auto first = Greeted();
  EXPECT_EQ(Ask(*first, 1, "A"), "OK");
  const auto second = Greeted();
  EXPECT_EQ(Ask(*second, 1, "A"), "FAIL");

  EXPECT_EQ(Ask(*first, 2, "wrong"), "FAIL");
  EXPECT_EQ(Ask(*second, 1, "A"), "OK");
  EXPECT_EQ(Ask(*first, 2, PasswordDigest("secret")), "FAIL") << "the other client has the seat";
  EXPECT_EQ(a->CurrentUsers, 1);
  second->Abort();
  EXPECT_TRUE(PumpUntil([this] { return server.ActiveCount() == 1; }));
  EXPECT_EQ(a->CurrentUsers, 0);
  EXPECT_THAT(server.events, IsEmpty()) << "it never logged in";
  EXPECT_EQ(first->Receive(), (WireMessage{6, ""}));
  EXPECT_EQ(Ask(*first, 2, PasswordDigest("secret")), "OK");
}

TEST_F(ClientSocketTest, NameIsHeldServerWideInAnyLetterCase) {
  const auto ann = LoggedIn("\xC3\x84nn", "A");
  const auto other = Greeted();
  EXPECT_EQ(Ask(*other, 1, "B"), "OK");
  EXPECT_EQ(Ask(*other, 2, PasswordDigest("secret")), "OK");
  EXPECT_EQ(Ask(*other, 3, "\xC3\xA4NN"), "FAIL");
  EXPECT_EQ(b->CurrentUsers, 0);
  b->Enabled = false;
  EXPECT_EQ(Ask(*other, 3, "Free"), "FAIL") << "no seat any more";
  b->Enabled = true;
  ann->Close();
  EXPECT_TRUE(PumpUntil([this] { return server.ActiveCount() == 1; }));
  {
    const auto third = Greeted();
    EXPECT_EQ(Ask(*other, 3, ""), "FAIL") << "another session has no name yet";
  }
  EXPECT_TRUE(PumpUntil([this] { return server.ActiveCount() == 1; }));
  EXPECT_EQ(Ask(*other, 3, ""), "OK");
  EXPECT_EQ(server.events.back(), "in ");
  other->Close();
  EXPECT_TRUE(PumpUntil([this] { return server.ActiveCount() == 0; }));
  EXPECT_EQ(server.events.back(), "out ");
  EXPECT_EQ(b->CurrentUsers, 0);
}

TEST_F(ClientSocketTest, BannedAddressGetsTheNoticeAndNothingElse) {
  server.Query("INSERT INTO bans(address, network) VALUES('127.0.0.1', 'another network')");
  TestClient client(server.Port());
  EXPECT_EQ(client.Receive(),
            (WireMessage{997, "Please contact an administrator formore information."}));
  EXPECT_THAT(server.status, ElementsAre("127.0.0.1: Client Connection Initiated...",
                                         "127.0.0.1: Client Previously Banned."));
  client.SendBytes(WireBytes(1, "A") + WireBytes(9, "") + WireBytes(999, ""));
  EXPECT_TRUE(client.HearsNothing());
  EXPECT_EQ(a->CurrentUsers, 0);
  client.Close();
  EXPECT_TRUE(PumpUntil([this] { return server.ActiveCount() == 0; }));
  EXPECT_EQ(server.status.size(), 3U);

  server.Query("DELETE FROM bans");
  Greeted();
}

TEST_F(ClientSocketTest, NewRangeDisconnectsItsClientsAndRefusesOthers) {
  TestClient inside(server.Port(), "127.0.0.5");
  TestClient outside(server.Port(), "127.0.0.4");
  EXPECT_TRUE(inside.Receive() && outside.Receive());
  const AddressRange range = RangeFromText("127.0.0.5-127.0.0.9").value();
  EXPECT_EQ(server.listener->SessionsIn(range).size(), 1U);
  EXPECT_TRUE(server.listener->BanRange(range, "spam", {}));
  EXPECT_EQ(inside.Receive(), (WireMessage{997, "spam"}));
  EXPECT_TRUE(inside.WasClosedByServer());
  EXPECT_TRUE(outside.HearsNothing() && !outside.IsClosed());
  TestClient later(server.Port(), "127.0.0.9");
  EXPECT_EQ(later.Receive(), (WireMessage{997, "spam"}));
  EXPECT_EQ(server.status.back(), "127.0.0.9: Client Previously Banned.");
}

TEST_F(UsersTest, RelaysWhatChangedToTheOthersOfTheNetwork) {
  ann->SendBytes(WireBytes(4, "1200,845,2,90,1,0") + WireBytes(4, "1200,845,2,90,0,1") +
                 WireBytes(4, "1200,845,2,89,0,1"));
  EXPECT_THAT(ann->Drain(), IsEmpty());
  EXPECT_THAT(bob->Drain(), ElementsAre(WireMessage{5, "Ann|1200,845,2,90,1,0"},
                                        WireMessage{5, "Ann|1200,845,2,89,0,1"}));
  EXPECT_THAT(eve->Drain(), IsEmpty());
  EXPECT_TRUE(server.SessionOf("Ann")->IsDead);

  const auto nameless = Greeted();
  EXPECT_EQ(Ask(*nameless, 1, "A"), "OK");
  bob->Send(5, "");
  EXPECT_THAT(bob->Drain(), ElementsAre(WireMessage{5, "Ann|1200,845,2,890,1"}))
      << "no comma after the hit points; neither the asker nor a session without a name";
}

TEST_F(UsersTest, ReportFieldsAreReadUpToTheEndOfTheirNumbers) {
  const struct {
    std::string report;
    std::string relayed;
  } cases[] = {
      {"1,2,3,4,5,6", "1,2,3,4,1,1"},
      {" 7.9 ,-8x,+9,1e2,0.0,-1", "7,-8,9,100,0,1"},
      {"1", "1,0,0,0,0,0"},
      {"", "0,0,0,0,0,0"},
      {"1,2,3,4,0,0,surplus,9", "1,2,3,4,0,0"},
      {",,,5,,", "0,0,0,5,0,0"},
      // Each of the first four alone is relayed.
      {"1,0,0,5", "1,0,0,5,0,0"},
      {"1,2,0,5", "1,2,0,5,0,0"},
      {"1,2,3,5", "1,2,3,5,0,0"},
      {"1,2,3,4", "1,2,3,4,0,0"},
  };
  for (const auto& [report, relayed] : cases) {
    ann->Send(4, report);
    EXPECT_EQ(bob->Receive(), (WireMessage{5, "Ann|" + relayed})) << report;
  }
}

TEST_F(UsersTest, MemberCommandsAreIgnoredBeforeTheLogin) {
  const auto client = Greeted();
  EXPECT_EQ(Ask(*client, 1, "A"), "OK");
  for (const std::int32_t command : {4, 5, 10, 11, 12, 13, 14, 0, -1, 6, 77, 998, INT32_MIN}) {
    client->Send(command, "1,2,3,4,0,0");
  }
  client->Send(9, "");
  EXPECT_THAT(client->Drain(), ElementsAre(WireMessage{9, "0"}));
  EXPECT_THAT(ann->Drain(), IsEmpty());
}

TEST_F(ClientSocketTest, LeavesOnceHoweverItsConnectionEnds) {
  const auto bob = LoggedIn("Bob");
  const auto eve = LoggedIn("Eve", "B");
  const auto connection = server.listener->UserLoggedOut.Connect([&](MapSocket&, const auto& user) {
    server.status.push_back("out " + user->Username());
    server.SessionOf("Bob")->SendMessage(998, "out");
  });
  const struct {
    std::string name;
    std::function<void(TestClient&)> end;
    bool hasErrorLine;
  } ways[] = {
      {"close", [](TestClient& client) { client.Close(); }, true},
      {"reset", [](TestClient& client) { client.Abort(); }, true},
      {"bad header", [](TestClient& client) { client.SendBytes("\0\0\0\0"s); }, false},
      {"operator",
       [this](TestClient&) {
         const auto session = server.SessionOf("Ann");
         session->Close();
         session->Close();
       },
       false},
  };
  for (const auto& way : ways) {
    const auto ann = LoggedIn("Ann");
    EXPECT_EQ(a->CurrentUsers, 2);
    server.status.clear();
    way.end(*ann);
    EXPECT_TRUE(PumpUntil([this] { return server.ActiveCount() == 2; })) << way.name;
    EXPECT_EQ(a->CurrentUsers, 1) << way.name;
    EXPECT_THAT(bob->Drain(), ElementsAre(WireMessage{998, "out"}, WireMessage{6, "Ann"}))
        << way.name;
    EXPECT_THAT(eve->Drain(), IsEmpty()) << way.name;
    if (way.hasErrorLine) {
      EXPECT_THAT(server.status,
                  ElementsAre("Client Disconnect: (" + std::to_string(kConnectionReset) + ") Ann",
                              "out Ann"))
          << way.name;
    } else {
      EXPECT_THAT(server.status, ElementsAre("out Ann")) << way.name;
      EXPECT_THAT(ann->Drain(), IsEmpty()) << way.name;
    }
  }
}

TEST_F(ClientSocketTest, IsReportedAsLoggedInBeforeItsAnswerIsSent) {
  const auto connection = server.listener->UserLoggedIn.Connect(
      [](MapSocket&, const auto& user) { user->SendMessage(998, user->Username()); });
  const auto ann = Greeted();
  EXPECT_EQ(Ask(*ann, 1, "A"), "OK");
  EXPECT_EQ(Ask(*ann, 2, PasswordDigest("secret")), "OK");
  ann->Send(3, "Ann");
  EXPECT_THAT(ann->Drain(), ElementsAre(WireMessage{998, "Ann"}, WireMessage{4, "OK"}));
}

// Seventy members of A, u0 to u69, in the order in which they connected.
class CrowdTest : public SessionTest {
 protected:
  CrowdTest() {
    a->MaxUsers = 100;
    for (int i = 0; i < 70; ++i)
      clients.push_back(LoggedIn("u" + std::to_string(i)));
    server.events.clear();
    server.status.clear();
  }

  // Makes the current handler old: the next walk over connections gives way.
  void GrowOld() {
    for (int i = 0; i < 64; ++i)
      server.loop.GiveWay();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }

  std::vector<std::unique_ptr<TestClient>> clients;
};

TEST_F(CrowdTest, NoEventOfALeavingSessionIsHandledWhileItsNetworkIsNotified) {
  clients[0]->Send(1, "nowhere");
  TakeIn(*server.SessionOf("u0"));
  GrowOld();
  server.SessionOf("u0")->Close();
  EXPECT_THAT(server.events, ElementsAre("out u0"));
  EXPECT_THAT(server.status, IsEmpty());
  EXPECT_THAT(clients[1]->Drain(), ElementsAre(WireMessage{6, "u0"}));
}

TEST_F(CrowdTest, LongWalksGiveWay) {
  MapSocket& listener = *server.listener;
  const std::pair<const char*, std::function<void()>> walks[] = {
      {"message", [&] { listener.BroadcastMessage("text", "A"); }},
      {"kick", [&] { listener.KickUser("u1", "A", "reason"); }},
      {"ban", [&] { listener.BanUser(*server.SessionOf("u0"), "nobody", "reason"); }},
      {"member list", [&] { Receive(*server.SessionOf("u0"), 5, ""); }},
      {"leave", [&] { listener.ClientDisconnect(*server.SessionOf("u0")); }},
      {"bye", [&] { listener.DisconnectAllClientsOnNetwork(a); }},
  };
  std::size_t waiting = clients.size();
  for (const auto& [name, walk] : walks) {
    const std::string user = "u" + std::to_string(--waiting);
    GrowOld();
    clients[waiting]->Send(4, "7");
    EXPECT_EQ(server.SessionOf(user)->X, 0) << name;
    walk();
    EXPECT_EQ(server.SessionOf(user)->X, 7) << name;
  }
}

TEST_F(ClientSocketTest, NamesOfArbitraryBytesAreKeptAsTheyAre) {
  const std::string large(1 << 20, 'n');
  for (const std::string& name :
       {"nul\0inside"s, "quo'te\"; --"s, "bar|comma,"s, "\xFF\xFE\x80"s, large}) {
    server.AddNetwork("net " + name);
    const auto one = LoggedIn(name, "net " + name);
    const auto two = LoggedIn("watcher", "net " + name);
    one->SendBytes(WireBytes(9, "") + WireBytes(4, "1"));
    EXPECT_EQ(two->Receive(), (WireMessage{5, name + "|1,0,0,0,0,0"}));
    EXPECT_THAT(one->Drain(), ElementsAre(WireMessage{9, "0"}));
    one->Close();
    EXPECT_EQ(two->Receive(), (WireMessage{6, name}));
    two->Close();
    EXPECT_TRUE(PumpUntil([this] { return server.ActiveCount() == 0; }));
  }
  EXPECT_EQ(server.Fault(), "");
  TestClient longer(server.Port());
  EXPECT_FALSE(longer.Login("A", "secret", large + "n"));
}

}  // namespace
}  // namespace corvane
