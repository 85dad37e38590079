#include <fstream>
#include <string>
#include <vector>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTimer>
#include <gmock/gmock.h>

#include "app/server_application.h"
#include "control/commands.h"
#include "control/control_name.h"
#include "control/control_server.h"
#include "framework/text.h"
#include "tests/app/app_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct Outcome {
  int exitCode = -1;
  std::string text;  // of both streams
};

// Ann and Bob are on the network North of a server that listens on its folder's local socket.
class ControlTest : public AppFixture {
 protected:
  explicit ControlTest(bool isHardened = false) : AppFixture(isHardened) {
    myApp.LoadServerSocket();
    EXPECT_EQ(control.Take(myFolder.path()), ControlServer::Claim::Made) << control.Error();
    control.Serve(commands);
    ann = LoggedIn("Ann");
    bob = LoggedIn("Bob", "North", "127.0.0.2");
  }

  Outcome Run(const QStringList& arguments, const QByteArray& input = {}) {
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QStringLiteral(CORVANECTL),
                  QStringList{"--data-folder", myFolder.path()} + arguments);
    program.write(input);
    program.closeWriteChannel();
    EXPECT_TRUE(PumpUntil([&] { return program.state() == QProcess::NotRunning; }));
    return {program.exitCode(), program.readAll().replace("\r\n", "\n").toStdString()};
  }

  // What the server answers to bytes; nothing where it drops the client.
  QByteArray Ask(QLocalSocket& client, const QByteArray& bytes) {
    client.connectToServer(ControlName(myFolder.path()));
    client.write(bytes);
    EXPECT_TRUE(PumpUntil(
        [&] { return client.canReadLine() || client.state() == QLocalSocket::UnconnectedState; }));
    return client.isOpen() ? client.readLine() : QByteArray();
  }

  std::string followed;
  ControlServer control;
  ServerLog& log = myApp.Log();
  Commands commands{myApp.Actions()};
  std::unique_ptr<TestClient> ann;
  std::unique_ptr<TestClient> bob;
};

TEST_F(ControlTest, CommandsAnswerAndActOnTheServer) {
  const std::string networks = "SELECT name,pass,users,enabled FROM networks WHERE name='Guild'";
  const std::string bans = "SELECT address,\"by\",reason,network FROM bans";
  const std::string admins = "SELECT name,address,network FROM admins";
  const std::string bobsBan = "127.0.0.2|Server Admin|so there|North;";
  const std::string tensBan = "10.0.0.1|Server Admin|x|;";
  const std::string annsGrant = "Ann|127.0.0.1|North;";
  const std::string evesGrant = "Eve|10.0.0.9|North;";
  struct Row {
    QStringList arguments;
    QByteArray input;
    int exitCode;
    std::string text;   // that is shown
    std::string query;  // if any
    std::string found = {};
    TestClient* client = nullptr;  // that hears
    WireMessage heard = {};
  };
  const std::vector<Row> rows = {
      {{"status"}, "", 0, "North    2      5          yes", ""},
      {{"users"}, "", 0, "Bob   North    127.0.0.2:", ""},
      {{"users", "--network", "so\nuth", "--json"}, "", 0, R"("rows":[])", ""},
      {{"users", "--network", "x"}, "", 1, "there is no network \"x\"", ""},
      {{"network", "add", "Guild", "--max-users", "7"},
       "p\xC3\xA4ss\n",
       0,
       "Added",
       networks,
       "Guild|p\xC3\xA4ss|7|1;"},
      {{"network", "add", "guild"}, "x\n", 1, "already", networks, "Guild|p\xC3\xA4ss|7|1;"},
      {{"network", "add", "Club"}, "", 2, "no password", networks, "Guild|p\xC3\xA4ss|7|1;"},
      {{"network", "edit", "GUILD", "--disable", "--max-users", "1001"},
       "",
       2,
       "\"max-users\" takes a number from 1 to 1000",
       networks,
       "Guild|p\xC3\xA4ss|7|1;"},
      {{"network", "edit", "GUILD", "--disable", "--password-file", "-"},
       "new",
       0,
       "Changed",
       networks,
       "Guild|new|7|0;"},
      {{"network", "edit", "GUILD", "--enable"}, "", 0, "Changed", networks, "Guild|new|7|1;"},
      {{"network", "edit", "GUILD"}, "", 2, "--max-users, --enable, --disable, --password-f", ""},
      {{"network", "edit", "GUILD", "--enable", "--disable"}, "", 2, "not both", ""},
      {{"networks", "--json"},
       "",
       0,
       R"({"enabled":true,"max-users":7,"name":"Guild","users":0})",
       ""},
      {{"network", "delete", "Guild"}, "", 0, "Deleted", networks, ""},
      {{"message", "--network", "north", "good", "day"},
       "",
       0,
       "Sent",
       "",
       "",
       ann.get(),
       {998, "good day"}},
      {{"kick", "ann", "--", "-o-"}, "", 0, "Kicked Ann", "", "", ann.get(), {996, "-o-"}},
      {{"kick", "Eve", "why"}, "", 1, "nobody \"Eve\"", ""},
      {{"kick", "Ann"},
       "",
       2,
       "REASON is missing\nUsage: corvanectl kick [OPTION...] USER REASON...",
       ""},
      {{"kick", "", "x"}, "", 2, "USER is empty", ""},
      {{"status", "now"}, "", 2, "\"now\" is one argument too many", ""},
      {{"log", "--lines", "x"}, "", 2, "--lines takes a number, not \"x\"", ""},
      {{"users", "--network", ""}, "", 2, "--network is empty", ""},
      {{"ban", "bob", "so there"},
       "",
       0,
       "Banned 127.0.0.2",
       bans,
       bobsBan,
       bob.get(),
       {997, "so there"}},
      {{"ban-address", "10.1", "x"}, "", 2, "takes an IPv4 address", ""},
      {{"ban-address", "10.0.0.1", "x", "--network", "x"}, "", 1, "no network \"x\"", ""},
      {{"ban-address", "10.0.0.1", "x"}, "", 0, "Banned", bans, bobsBan + tensBan},
      {{"bans"}, "", 0, "10.0.0.1   Server Admin  x", ""},
      {{"unban", "127.0.0.2"}, "", 0, "Lifted 1", bans, tensBan},
      {{"unban", "2"}, "", 0, "Lifted 1", bans, ""},
      {{"grant", "ann"}, "", 0, "Ann is", admins, annsGrant},
      {{"grant", "ann"}, "", 1, "is an administrator already", admins, annsGrant},
      {{"grant", "Eve", "--network", "north"}, "", 2, "expected are both", ""},
      {{"grant", "Eve", "--network", "north", "--address", "1.2.3"}, "", 2, "not \"1.2.3\"", ""},
      {{"grant", "Eve", "--network", "north", "--address", "10.0.0.9"},
       "",
       0,
       "",
       admins,
       annsGrant + evesGrant},
      {{"admins"}, "", 0, "2   Eve   North    10.0.0.9", ""},
      {{"revoke", "ANN"}, "", 0, "Took back 1", admins, evesGrant},
      {{"set", "AtachedPort", "1"}, "", 1, "AttachedNIC, AttachedPort", ""},
      {{"set", "AttachedPort", "70000"}, "", 2, "a port from 0 to 65535", ""},
      {{"set", "hardened", "maybe"}, "", 2, "Hardened takes 1, yes", ""},
      {{"set", "AttachedPort", "12345"}, "", 0, "Set", ""},
      {{"settings", "--json"}, "", 0, R"({"name":"AttachedPort","value":"12345"})", ""},
      {{"network", "disconnect", "north"}, "", 0, "Sent away", "", "", ann.get(), {999, "BYE"}},
      {{"frob"}, "", 2, "no command", ""},
      {{"status", "--data-folder", ""}, "", 2, "--data-folder is empty", ""},
      {{}, "", 2, "no command\n\nUsage", ""},
      {{"network"}, "", 2, "\n  network disconnect    Sends", ""},
      {{"network", "x"}, "", 2, "no command \"network x\"", ""},
      {{"network", "--help"}, "", 0, "\n  network add           Adds", ""},
      {{"help"}, "", 0, "\n  kick ", ""},
      {{"help", "network"}, "", 0, "\n  network add ", ""},
      {{"kick", "--help"}, "", 0, "\nUsage: corvanectl kick [OPTION...] USER REASON...\n", ""},
      {{"help", "kick"}, "", 0, "\n  --name                USER is", ""},
      {{"complete", "--", "--json", "network", "e"}, "", 0, "\nedit\tChanges", ""},
      {{"complete", "--", "network", "edit", "--e"}, "", 0, "\n--enable\tLet users in.\n", ""},
      {{"complete", "--", "--data-folder", "/x", "st"}, "", 0, "\nstatus\tHow", ""},
      {{"complete", "--", "--data-folder", ""}, "", 0, ":folders\n", ""},
      {{"complete", "--", "kick", "x"}, "", 0, "", ""},
      {{"complete", "--", "backup", "--overwrite", "x"}, "", 0, ":files\n", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.arguments.join(' ').toStdString());
    const Outcome outcome = Run(row.arguments, row.input);
    EXPECT_EQ(outcome.exitCode, row.exitCode);
    EXPECT_THAT('\n' + outcome.text, HasSubstr(row.text));
    if (!row.query.empty()) {
      EXPECT_EQ(Query(row.query), row.found);
    }
    if (row.client != nullptr) {
      std::optional<WireMessage> heard;
      while ((heard = row.client->Receive()) && heard != row.heard) {
      }
      EXPECT_EQ(heard, row.heard);
    }
  }
}

TEST_F(ControlTest, AddressAndPortAreNoNameUnlessSaid) {
  const QString peer = DisplayText(myApp.Actions().FindUser("Bob", true)->PeerName());
  const auto eve = LoggedIn(TextFromDisplay(peer), "North", "127.0.0.3");
  EXPECT_THAT(Run({"kick", peer, "x"}).text, HasSubstr("Kicked Bob."));
  EXPECT_EQ(Run({"disconnect", peer}).exitCode, 0);
  EXPECT_TRUE(bob->WasClosedByServer());
  const Outcome missed = Run({"ban", peer, "x"});
  EXPECT_EQ(missed.exitCode, 1);
  EXPECT_THAT(missed.text, HasSubstr("nobody"));
  EXPECT_EQ(Run({"ban", peer, "--name", "x"}).exitCode, 0);
  EXPECT_EQ(Query("SELECT address FROM bans"), "127.0.0.3;");
}

TEST_F(ControlTest, WhatDidNotWorkIsTold) {
  OtherProgram(myFolder.filePath("serverdb.rsd")).Run("ALTER TABLE bans RENAME TO b");
  for (const QStringList& ban :
       {QStringList{"ban", "Bob", "x"}, {"ban-address", "10.0.0.1", "x"}}) {
    const Outcome banned = Run(ban);
    EXPECT_EQ(banned.exitCode, 0) << "it counts";
    EXPECT_THAT(banned.text, HasSubstr("counts but is not stored (database: no such table: bans)"));
  }
  OtherProgram(myFolder.filePath("serverdb.rsd")).Run("ALTER TABLE b RENAME TO bans");
  EXPECT_TRUE(PumpUntil([&] { return Query("SELECT count(*) FROM bans") == "2;"; }));
  EXPECT_EQ(Run({"unban", "2000000001"}).text, "Lifted 1 ban(s).\n") << "as it was listed before";

  // A folder in its place, since a full disk is hard to have.
  QDir data(myFolder.path());
  EXPECT_TRUE(data.remove("Corvane Server.xml") && data.mkdir("Corvane Server.xml"));
  const Outcome set = Run({"set", "AttachedPort", "12345"});
  EXPECT_EQ(set.exitCode, 1);
  EXPECT_THAT(set.text, HasSubstr("not saved"));
  EXPECT_EQ(myApp.Settings().GetValue("AttachedPort", ""), "0");
  EXPECT_THAT(Run({"log", "--lines", "1"}).text,
              HasSubstr("corvanectl: AttachedPort was not saved: "));

  if (!QFile::exists("/dev/full")) return;
  for (const QStringList& command : {QStringList{"status"}, {"users", "--json"}, {"help"}}) {
    QProcess program;
    program.setStandardOutputFile("/dev/full");
    program.start(QStringLiteral(CORVANECTL),
                  QStringList{"--data-folder", myFolder.path()} + command);
    EXPECT_TRUE(PumpUntil([&] { return program.state() == QProcess::NotRunning; }));
    EXPECT_EQ(program.exitCode(), 4);
    EXPECT_THAT(program.readAllStandardError().toStdString(), HasSubstr("standard output: "));
  }
}

TEST_F(ControlTest, ReloadDoesWhatWasDoneToTheDatabase) {
  const auto rows = [this](const QStringList& arguments = {}) {
    const Outcome outcome = Run(QStringList{"reload"} + arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.text;
    return outcome.text.substr(outcome.text.find('\n') + 1);
  };
  EXPECT_EQ(rows(), "") << "nothing is different";
  // A second North, which is nobody's yet, and a name that differs in its case are others.
  Query(
      "UPDATE networks SET pass='new', users=1 WHERE name='North'; INSERT INTO networks VALUES"
      "('North','x',2,0),('SO\nUTH','secret',9,1); DELETE FROM networks WHERE name='So\nuth'");
  const auto carl = LoggedIn("Carl", "So\nuth");
  EXPECT_EQ(rows(),
            "removed  So\\nuth  1      5          yes\n"
            "changed  North    2      1          yes\n"
            "added    North    0      2          no\n"
            "added    SO\\nUTH  0      9          yes\n");
  EXPECT_EQ(carl->Receive(), (WireMessage{998, "This network has been removed from the server."}));
  EXPECT_EQ(carl->Receive(), (WireMessage{999, "BYE"}));
  EXPECT_TRUE(ann->HearsNothing()) << "its network only changed";
  EXPECT_EQ(myApp.Actions().Networks().size(), 3U);
  EXPECT_FALSE(TestClient(myApp.Listener().Port()).LogIn("So\nuth", "new", "Eve"));
  Query("UPDATE networks SET users=3 WHERE name='North' AND enabled");
  commands.ReloadForSignal();
  EXPECT_TRUE(TestClient(myApp.Listener().Port()).LogIn("North", "new", "Eve"));
  EXPECT_THAT(Run({"log", "--lines", "20"}).text,
              HasSubstr("SIGHUP: reload: changed network North"));
  Query("UPDATE networks SET pass='newest' WHERE name='North' AND enabled");
  commands.ReloadForSignal();
  EXPECT_TRUE(TestClient(myApp.Listener().Port()).LogIn("North", "newest", "Eve"));

  Query("ALTER TABLE networks RENAME TO n");
  const Outcome failed = Run({"reload"});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_THAT(failed.text, HasSubstr("database: no such table: networks"));
  // Windows lets nobody do that to a file that is open.
  if (QFile::rename(myFolder.filePath("serverdb.rsd"), myFolder.filePath("old.rsd"))) {
    EXPECT_THAT(Run({"reload"}).text, HasSubstr("database: the file was replaced"));
  }
  EXPECT_EQ(myApp.Actions().Networks().size(), 3U) << "a fault changes nothing";
}

TEST_F(ControlTest, MessageThatWouldEndTheServerIsRefusedWithTheAddresses) {
  TestClient stranger(myApp.Listener().Port(), "127.0.0.7");
  ASSERT_TRUE(stranger.Receive());
  Query("DELETE FROM networks WHERE name='North'");
  for (const QStringList& command :
       {QStringList{"message", "x"}, {"network", "delete", "North"}, {"reload"}}) {
    const Outcome outcome = Run(command);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.text, HasSubstr("  127.0.0.7:"));
  }
  commands.ReloadForSignal();
  EXPECT_THAT(Run({"log", "--lines", "1"}).text,
              HasSubstr("or use --force with corvanectl reload: 127.0.0.7:"));
  EXPECT_TRUE(ann->HearsNothing());
  EXPECT_TRUE(myBoxes.empty());
  // With force it is as from the window.
  auto& application = dynamic_cast<ServerApplication<QCoreApplication>&>(*qApp);
  application.LastResort = [this] { myApp.LastResort(); };
  QLocalSocket client;
  client.connectToServer(ControlName(myFolder.path()));
  client.write("{\"command\":\"message\",\"text\":\"x\",\"force\":true}\n");
  EXPECT_TRUE(PumpUntil([this] { return !myBoxes.empty(); }));
  application.LastResort = nullptr;
  EXPECT_THAT(myBoxes, ElementsAre(HasSubstr("NilObjectException")));
}

class HardenedControlTest : public ControlTest {
 protected:
  HardenedControlTest() : ControlTest(true) {}
};

TEST_F(HardenedControlTest, MessageEndsNothingAndWhoIsKickedIsClosed) {
  TestClient stranger(myApp.Listener().Port(), "127.0.0.7");
  ASSERT_TRUE(stranger.Receive());
  EXPECT_EQ(Run({"message", "x"}).exitCode, 0);
  EXPECT_EQ(ann->Receive(), (WireMessage{998, "x"}));
  EXPECT_THAT(Run({"users"}).text, testing::Not(HasSubstr("127.0.0.7"))) << "who has not logged in";
  EXPECT_EQ(Run({"message", QString(50'000, 'x')}).exitCode, 0);
  const auto status = QJsonDocument::fromJson(Run({"status", "--json"}).text.c_str());
  EXPECT_GT(status["sent-per-second"].toInt(), 10 * status["received-per-second"].toInt());
  ann->Receive();
  EXPECT_EQ(Run({"kick", "Ann", "y"}).exitCode, 0);
  EXPECT_EQ(ann->Receive(), (WireMessage{996, "y"}));
  EXPECT_TRUE(ann->WasClosedByServer());
}

TEST_F(ControlTest, BadInputIsRefusedOrDropped) {
  struct Row {
    QByteArray bytes;
    QByteArray answer;  // part of it
    bool stays;
  };
  for (const Row& row : std::vector<Row>{
           {"\n", "expected is one JSON object", true},
           {QByteArray("\xFF\0\x01{[\n", 6), "expected is one JSON object", true},
           {"[1]\n", "expected is one JSON object", true},
           {"{}\n", R"(\"command\" takes a text)", true},
           {"{\"command\":7}\n", R"(\"command\" takes a text)", true},
           {"{\"command\":\"\\u0000\"}\n", "expected is one of: status", true},
           {"{\"command\":\"users\",\"network\":{}}\n", R"(\"network\" takes a text)", true},
           {QByteArray(100 << 20, 'x'), "", false},
           {QByteArray((1 << 20) + 1, 'x') + '\n', "more than 1 MiB", false},
       }) {
    QLocalSocket client;
    EXPECT_THAT(Ask(client, row.bytes).toStdString(), HasSubstr(row.answer.toStdString()))
        << row.bytes.left(50).toStdString();
    if (row.stays) {
      client.write(R"({"command":"networks"})"
                   "\n");
      EXPECT_TRUE(PumpUntil([&] { return client.canReadLine(); })) << "it may ask again";
    } else {
      EXPECT_TRUE(PumpUntil([&] { return client.state() == QLocalSocket::UnconnectedState; }));
    }
  }
  EXPECT_TRUE(ann->HearsNothing()) << "and the relay is as it was";
}

TEST_F(ControlTest, SixteenGetInAndWhoGoesAwayMakesRoom) {
  std::vector<std::unique_ptr<QLocalSocket>> clients;
  for (int i = 0; i < 16; ++i) {
    clients.push_back(std::make_unique<QLocalSocket>());
    EXPECT_THAT(Ask(*clients.back(), R"({"command":"status"})"
                                     "\n{\"half"),
                HasSubstr("classic"));
  }
  EXPECT_EQ(Run({"status"}).exitCode, 1);
  clients.clear();
  EXPECT_TRUE(PumpUntil([this] { return Run({"status"}).exitCode == 0; }));
}

TEST_F(ControlTest, LogTellsWhoDidWhatAndGoesOnForWhoFollows) {
  QProcess follower;
  follower.start(QStringLiteral(CORVANECTL),
                 {"--data-folder", myFolder.path(), "log", "--lines", "0", "--follow"},
                 QIODevice::ReadWrite | QIODevice::Text);
  const auto tells = [&](const std::string& line) {
    return PumpUntil([&] {
      followed += follower.readAll().toStdString();
      return followed.find("] " + line + "\n") != std::string::npos;
    });
  };
  // However long it takes to start.
  EXPECT_TRUE(PumpUntil([&] {
    QTimer::singleShot(0, &control, [this] { log.Write("are you there?"); });
    followed += follower.readAll().toStdString();
    return !followed.empty();
  })) << follower.readAllStandardError().toStdString();
  QLocalSocket deaf;  // follows, too, and reads nothing
  Ask(deaf, R"({"command":"log","follow":true})"
            "\n");
  deaf.setReadBufferSize(1);
  EXPECT_TRUE(myApp.Actions().MakeAdmin(*myApp.Actions().FindUser("Ann", true)));
  ann->Send(10, "Bob|go\nnow");
  EXPECT_TRUE(tells("administrator Ann of North (127.0.0.1): kick Bob|go\\nnow"));
  Run({"set", "AttachedPort", "1"});
  EXPECT_TRUE(tells("corvanectl: set AttachedPort to 1"));
  OtherProgram(myFolder.filePath("serverdb.rsd")).Run("ALTER TABLE admins RENAME TO a");
  Run({"grant", "Bob"});
  EXPECT_TRUE(tells("database: no such table: admins"));
  EXPECT_THAT(Run({"log", "--lines", "2"}).text, testing::EndsWith("no such table: admins\n"));
  QFile audit(myFolder.filePath("logs/corvane-audit.log"));
  EXPECT_TRUE(audit.open(QIODevice::ReadOnly));
  std::string audited;
  EXPECT_TRUE(PumpUntil([&] {
    audited += audit.readAll().toStdString();
    return audited.find("corvanectl: make ") != std::string::npos;
  }));
  EXPECT_THAT(audited, testing::MatchesRegex(
                           ".*window: make administrator Ann[^\n]*\n[^\n]*: kick Bob[^\n]*\n"
                           "[^\n]*corvanectl: set [^\n]*\n[^\n]*corvanectl: make [^\n]*\n"));
  // One who does not read is dropped; the follower, which keeps up, is not.
  const auto connections = [this] { return control.children().size(); };
  EXPECT_EQ(connections(), 2);
  for (int i = 0; i < 100 && connections() == 2; ++i) {
    const std::string end = "end " + std::to_string(i);
    // From the loop, as in the server: what goes is deleted there.
    QTimer::singleShot(0, &control, [&] {
      for (int line = 0; line < 40; ++line)
        log.Write(std::string(4'000, 'x'));
      log.Write(end);
    });
    ASSERT_TRUE(tells(end));
  }
  EXPECT_EQ(connections(), 1);
  log.Write("the last");
  EXPECT_TRUE(tells("the last"));
  follower.kill();
  follower.waitForFinished();
}

TEST(ControlConnection, IdleClientIsDroppedUnlessItFollows) {
  const QTemporaryDir folder;
  QLocalServer server;
  ASSERT_TRUE(server.listen(ControlName(folder.path())));
  QLocalSocket idle;
  QLocalSocket follower;
  std::vector<QPointer<ControlConnection>> connections;
  for (QLocalSocket* client : {&idle, &follower}) {
    client->connectToServer(ControlName(folder.path()));
    ASSERT_TRUE(server.waitForNewConnection(5'000));
    connections.emplace_back(new ControlConnection(server.nextPendingConnection(), &server,
                                                   std::chrono::milliseconds(50)));
  }
  connections[1]->StartFollowing();
  EXPECT_TRUE(PumpUntil([&] { return connections[0].isNull(); }));
  PumpFor(std::chrono::milliseconds(150));
  ASSERT_FALSE(connections[1].isNull());
  connections[1]->SendFollowed("still there");
  EXPECT_TRUE(PumpUntil([&] { return follower.readAll() == "still there\n"; }));
}

TEST_F(ControlTest, BackupIsWholeWhileTheDatabaseIsUsed) {
  // Some megabytes, so that it takes many steps.
  Query(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<2000)"
      "INSERT INTO bans (address,reason) SELECT 'old', hex(zeroblob(2000)) FROM n");
  const QString file = myFolder.filePath("copy.rsd");
  const QString link = myFolder.filePath("link.lnk");
  std::ofstream((file + ".part").toStdString()) << "somebody's";
  QFile::link(myFolder.filePath("Corvane Server.xml"), link);
  QDir(myFolder.path()).mkpath("folder");
  QDir(myFolder.path()).mkpath("logs");
  int banned = 0;
  QTimer bans;
  QObject::connect(&bans, &QTimer::timeout, [&] {
    myApp.Actions().BanAddress("10.0.0." + std::to_string(++banned), "meanwhile", "");
  });
  bans.start(std::chrono::milliseconds(5));
  Outcome made = Run({"backup", file});
  bans.stop();
  EXPECT_EQ(made.exitCode, 0) << made.text;
  EXPECT_GT(banned, 3);
  EXPECT_EQ(OtherProgram(file).Run("PRAGMA integrity_check; SELECT count(*) FROM bans WHERE "
                                   "address='old'; SELECT name FROM networks LIMIT 1"),
            "ok;2000;North;");
  QFile settings(file + ".xml");
  EXPECT_TRUE(settings.open(QIODevice::ReadOnly) && settings.readAll().contains("AttachedNIC"));
  settings.close();
  struct Row {
    QStringList arguments;
    int exitCode;
    std::string text;
  };
  for (const Row& row : std::vector<Row>{
           {{"backup", file}, 1, "already"},
           {{"backup", file, "--overwrite"}, 0, "Made"},
           {{"backup", myFolder.filePath("serverdb.rsd"), "--overwrite"}, 1, "itself uses"},
           {{"backup", myFolder.filePath("./serverdb.rsd-journal")}, 1, "itself uses"},
           {{"backup", myFolder.filePath("Corvane Server"), "--overwrite"}, 1, "itself uses"},
           {{"backup", myFolder.filePath("corvane-bans.waiting")}, 1, "itself uses"},
           {{"backup", myFolder.filePath("logs/x"), "--overwrite"}, 1, "itself uses"},
           {{"backup", link, "--overwrite"}, 1, "not a regular file"},
           {{"backup", myFolder.filePath("folder"), "--overwrite"}, 1, "not a regular file"},
           {{"backup", myFolder.filePath("none/copy")}, 1, "none/copy: "},
       }) {
    made = Run(row.arguments);
    EXPECT_EQ(made.exitCode, row.exitCode) << row.arguments[1].toStdString();
    EXPECT_THAT(made.text, HasSubstr(row.text));
  }
  EXPECT_THAT(QDir(myFolder.path()).entryList({"copy.rsd*"}),
              testing::ElementsAre("copy.rsd", "copy.rsd.part", "copy.rsd.xml"));
  QFile part(file + ".part");
  EXPECT_TRUE(part.open(QIODevice::ReadOnly) && part.readAll() == "somebody's");
}

TEST_F(ControlTest, OneServerAFolderAndWhatNobodyAnswersOnIsReplaced) {
  EXPECT_EQ(ControlServer().Take(myFolder.path()), ControlServer::Claim::Taken);
  EXPECT_EQ(Run({"status"}).exitCode, 0);
  QTemporaryDir other;
  QFile left(other.filePath("corvane-server.sock"));
  ASSERT_TRUE(left.open(QIODevice::WriteOnly));
  EXPECT_EQ(Run({"--data-folder", other.path(), "status"}).exitCode, 3);
  EXPECT_EQ(ControlServer().Take(other.path()), ControlServer::Claim::Made);
  EXPECT_EQ(Run({"quit"}).exitCode, 0);
  EXPECT_TRUE(PumpUntil([this] { return myApp.IsQuitting(); }));
  QFile::remove(myFolder.filePath("corvane-server.sock"));
  EXPECT_EQ(ControlServer().Take(myFolder.path()), ControlServer::Claim::Taken);
}

TEST_F(ControlTest, WhateverAnswersCannotMisleadOrFloodTheTerminal) {
  QTemporaryDir other;
  QLocalServer impostor;
  ASSERT_TRUE(impostor.listen(ControlName(other.path())));
  QByteArray answer;
  QObject::connect(&impostor, &QLocalServer::newConnection,
                   [&] { impostor.nextPendingConnection()->write(answer + '\n'); });
  const struct {
    QStringList arguments;
    QByteArray answer;
    std::string shown;
  } rows[] = {
      {{"log"}, R"({"ok":true,"lines":["\u001b[2J\u202e"]})", "\\x1b[2J\\u202e\n"},
      {{"log"},
       R"({"ok":true,"line":")" + QByteArray(9000, 'x') + "\"}",
       std::string(8192, 'x') + "...\n"},
      {{"bans", "--json"},
       "{\"ok\":true,\"rows\":[\"\x1B\xC2\x9B\u202E\u2028\U000E0041\u2764\uFE0F\"]}",
       R"({"ok":true,"rows":["\u001b\u009b\u202e\u2028\udb40\udc41)"
       "\u2764\uFE0F\"]}\n"},
  };
  for (const auto& row : rows) {
    answer = row.answer;
    EXPECT_EQ(Run(QStringList{"--data-folder", other.path()} + row.arguments).text, row.shown);
  }
}

}  // namespace
}  // namespace corvane
