#include <algorithm>
#include <thread>
#include <tuple>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>

#include "net/poll_loop.h"
#include "tests/control/control_fixture.h"

namespace corvane {
namespace {

using testing::HasSubstr;
using testing::Not;

// What a program that monitors the server asks of it.
class WatchingTest : public ControlTest {
 protected:
  WatchingTest() {
    follower.connectToServer(LocalSocketName(myFolder.path(), kServerSocket));
    follower.write(R"({"command":"events","follow":true,"types":"login,leave,refused,kick,ban,)"
                   R"(lifted,message,network"})"
                   "\n");
    EXPECT_EQ(Next(), QJsonObject({{"ok", true}, {"lines", QJsonArray()}}));
  }

  QJsonObject Next() {
    EXPECT_TRUE(PumpUntil([&] { return follower.canReadLine(); }));
    const QByteArray line = follower.readLine();
    EXPECT_TRUE(std::ranges::all_of(line, [](char c) { return c > 0; })) << line.constData();
    QJsonObject event = QJsonDocument::fromJson(line).object();
    const QString time = event.take("time").toString();
    EXPECT_TRUE(time.isEmpty() || QDateTime::fromString(time, Qt::ISODateWithMs).isValid())
        << line.constData();
    return event;
  }

  QLocalSocket follower;
};

TEST_F(WatchingTest, FollowerGetsEachEventWithItsFields) {
  const QString local = "127.0.0.1";
  const auto carl = LoggedIn("C\xC3\xA4rl\n");
  EXPECT_EQ(Next(), QJsonObject({{"type", "login"},
                                 {"user", QStringLiteral("C\u00E4rl\n")},
                                 {"network", "North"},
                                 {"address", local}}));
  TestClient eve(myApp.Listener().Port());
  for (const auto& [command, payload, reason] : {std::tuple(1, "Nowhere", "unknown-network"),
                                                 {2, "", "out-of-turn"},
                                                 {1, "North", ""},
                                                 {2, "wrong", "wrong-password"}}) {
    eve.Send(command, payload);
    if (*reason == 0) continue;
    const QJsonObject event = Next();
    EXPECT_EQ(event["type"], "refused");
    EXPECT_EQ(event["reason"], reason);
    EXPECT_EQ(event["address"], local);
  }
  Type("message --network North hello");
  EXPECT_EQ(Next(), QJsonObject({{"type", "message"}, {"network", "North"}, {"text", "hello"}}));
  Type("kick Bob rude");
  EXPECT_EQ(Next(), QJsonObject({{"type", "kick"},
                                 {"user", "Bob"},
                                 {"network", "North"},
                                 {"address", "127.0.0.2"},
                                 {"text", "rude"}}));
  bob->Close();
  EXPECT_EQ(Next()["reason"], "client");
  Type("disconnect Ann");
  EXPECT_EQ(Next()["reason"], "server");
  Type("ban-address 10.0.0.1 spam");
  EXPECT_EQ(
      Next(),
      QJsonObject(
          {{"type", "ban"}, {"by", "Server Admin"}, {"address", "10.0.0.1"}, {"text", "spam"}}));
  Type("unban 10.0.0.1");
  EXPECT_EQ(Next()["type"], "lifted");
  Type("network edit North --max-users 7");
  EXPECT_EQ(Next(),
            QJsonObject({{"type", "network"}, {"reason", "changed"}, {"network", "North"}}));
}

TEST_F(WatchingTest, SecondRequestReplacesTheTypes) {
  for (const char* types : {",", "login,", "x"})
    EXPECT_EQ(Run({"events", "--follow", "--types", types}).exitCode, 2) << types;
  follower.write(R"({"command":"events","follow":true,"types":" kick , ban"})"
                 "\n");
  EXPECT_TRUE(Next()["ok"].toBool());
  for (const char* line : {"message x", "kick Bob x", "ban-address 10.0.0.1"})
    Type(line);
  EXPECT_EQ(Next()["type"], "kick");
  EXPECT_EQ(Next()["type"], "ban");
}

TEST_F(WatchingTest, SlowFollowerLosesEventsAndLearnsHowMany) {
  const ServerEvent event{.kind = ServerEvent::Kind::Message, .text = "again"};
  for (int i = 0; i < 1500; ++i)
    myApp.Op().Events().Raise(event);
  for (int i = 0; i < 1000; ++i)
    ASSERT_EQ(Next(), QJsonObject({{"type", "message"}, {"text", "again"}}));
  ASSERT_TRUE(PumpUntil([&] {
    myApp.Op().Events().Raise(event);
    return follower.canReadLine();
  }));
  EXPECT_GE(Next()["dropped"].toInt(), 500);
}

TEST_F(WatchingTest, MetricsCountWhatHappened) {
  Query("INSERT INTO networks VALUES('a\"b\\c','x',2,1)");
  Type("reload");
  ann->Send(4, "1,2,0,50,0,0");
  EXPECT_EQ(bob->Receive()->command, 5);
  EXPECT_FALSE(TestClient(myApp.Listener().Port()).Login("North", "wrong", "Eve"));
  const Outcome metrics = Type("metrics");
  EXPECT_EQ(metrics.exitCode, 0);
  for (const char* line :
       {"corvane_logins_total 2", "corvane_refused_total{reason=\"wrong-password\"} 1",
        "corvane_refused_total{reason=\"unknown-network\"} 0", "corvane_reports_total 1",
        "corvane_deliveries_total 1", "corvane_connections{state=\"logged-in\"} 2",
        "corvane_members{network=\"North\"} 2", "corvane_seats{network=\"North\"} 5",
        "corvane_seats{network=\"a\\\"b\\\\c\"} 2", "corvane_listening 1"}) {
    EXPECT_THAT(metrics.text, HasSubstr(line + std::string("\n")));
  }
  for (const char* name : {"resident_memory_bytes", "pass_duration_seconds_sum"})
    EXPECT_THAT(metrics.text, Not(HasSubstr("corvane_" + std::string(name) + " 0\n")));
  EXPECT_THAT(metrics.text, Not(HasSubstr("Ann")));
}

TEST_F(WatchingTest, CheckNamesWhatDoesNotWork) {
  EXPECT_EQ(Type("status --check").text, "The server works.\n");
  const auto fails = [this](const char* reason) {
    const Outcome outcome = Type("status --check");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.text, HasSubstr(reason));
  };
  OtherProgram other(myFolder.filePath("serverdb.rsd"));
  other.Run("BEGIN IMMEDIATE");
  fails("database is locked");
  other.Run("COMMIT");
  QTimer::singleShot(0, &control, [] { std::this_thread::sleep_for(std::chrono::seconds(1)); });
  fails("it was busy for 1");
  myApp.Listener().StopListening();
  fails("does not listen");
}

}  // namespace
}  // namespace corvane
