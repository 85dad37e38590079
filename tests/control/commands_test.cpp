#include <fstream>
#include <tuple>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTimer>

#include "tests/control/control_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

using CommandsTest = ControlTest;

TEST_F(CommandsTest, ReloadAppliesChangesInTheDatabase) {
  const auto rows = [this](const QStringList& arguments = {}) {
    const Outcome outcome = Run(QStringList{"reload"} + arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.text;
    return outcome.text.substr(outcome.text.find('\n') + 1);
  };
  EXPECT_EQ(rows(), "") << "nothing is different";
  // A second North without users, and a name in other letter case, are different networks.
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
  EXPECT_EQ(myApp.Op().Networks().size(), 3U);
  EXPECT_FALSE(TestClient(myApp.Listener().Port()).Login("So\nuth", "new", "Eve"));
  Query("UPDATE networks SET users=3 WHERE name='North' AND enabled");
  commands.ReloadForSignal();
  EXPECT_TRUE(TestClient(myApp.Listener().Port()).Login("North", "new", "Eve"));
  EXPECT_THAT(Run({"log", "--lines", "20"}).text,
              HasSubstr("SIGHUP: reload: changed network North"));
  Query("UPDATE networks SET pass='newest' WHERE name='North' AND enabled");
  commands.ReloadForSignal();
  EXPECT_TRUE(TestClient(myApp.Listener().Port()).Login("North", "newest", "Eve"));

  Query("ALTER TABLE networks RENAME TO n");
  const Outcome failed = Run({"reload"});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_THAT(failed.text, HasSubstr("database: no such table: networks"));
  // Windows refuses to rename an open file.
  if (QFile::rename(myFolder.filePath("serverdb.rsd"), myFolder.filePath("old.rsd"))) {
    EXPECT_THAT(Run({"reload"}).text, HasSubstr("database: the file was replaced"));
  }
  EXPECT_EQ(myApp.Op().Networks().size(), 3U) << "a fault changes nothing";
}

TEST_F(CommandsTest, MessageThatWouldEndTheServerIsRefusedWithTheAddresses) {
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
  // With force the message is sent, and ends the server.
  application.LastResort = [this] { myApp.LastResort(); };
  QLocalSocket client;
  client.connectToServer(LocalSocketName(myFolder.path(), kServerSocket));
  client.write("{\"command\":\"message\",\"text\":\"x\",\"force\":true}\n");
  EXPECT_TRUE(PumpUntil([this] { return !myBoxes.empty(); }));
  application.LastResort = nullptr;
  EXPECT_THAT(myBoxes, ElementsAre(HasSubstr("NilObjectException")));
}

class HardenedCommandsTest : public ControlTest {
 protected:
  HardenedCommandsTest() : ControlTest(true) {}
};

TEST_F(HardenedCommandsTest, MessageEndsNothingAndKickedUserIsClosed) {
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

TEST_F(CommandsTest, LogNamesActorsAndReachesFollowers) {
  ServerLog& log = myApp.Log();
  std::string followed;
  QProcess follower;
  follower.start(QStringLiteral(CORVANECTL),
                 {"--data-folder", myFolder.path(), "log", "--lines", "0", "--follow"},
                 QIODevice::ReadWrite | QIODevice::Text);
  const auto shows = [&](const std::string& line) {
    return PumpUntil([&] {
      followed += follower.readAll().toStdString();
      return followed.find("] " + line + "\n") != std::string::npos;
    });
  };
  // Until the follower has started.
  EXPECT_TRUE(PumpUntil([&] {
    QTimer::singleShot(0, &control, [&log] { log.Write("are you there?"); });
    followed += follower.readAll().toStdString();
    return !followed.empty();
  })) << follower.readAllStandardError().toStdString();
  QLocalSocket deaf;  // follows and reads nothing
  Ask(deaf, R"({"command":"log","follow":true})"
            "\n");
  deaf.setReadBufferSize(1);
  EXPECT_TRUE(myApp.Op().MakeAdmin("Ann", "127.0.0.1", "North"));
  ann->Send(10, "Bob|go\nnow");
  EXPECT_TRUE(shows("administrator Ann of North (127.0.0.1): kick Bob|go\\nnow"));
  Run({"set", "AttachedPort", "1"});
  EXPECT_TRUE(shows("corvanectl: set AttachedPort to 1"));
  OtherProgram(myFolder.filePath("serverdb.rsd")).Run("ALTER TABLE admins RENAME TO a");
  Run({"grant", "Bob"});
  EXPECT_TRUE(shows("database: no such table: admins"));
  EXPECT_THAT(Run({"log", "--lines", "2"}).text, testing::EndsWith("no such table: admins\n"));
  QFile audit(myFolder.filePath("logs/corvane-audit.log"));
  EXPECT_TRUE(audit.open(QIODevice::ReadOnly));
  std::string audited;
  EXPECT_TRUE(PumpUntil([&] {
    audited += audit.readAll().toStdString();
    return audited.find("corvanectl: make ") != std::string::npos;
  }));
  const QRegularExpression lines(
      "window: make administrator Ann[^\n]*\n[^\n]*: kick Bob[^\n]*\n"
      "[^\n]*corvanectl: set [^\n]*\n[^\n]*corvanectl: make [^\n]*\n$");
  EXPECT_TRUE(lines.match(QString::fromStdString(audited)).hasMatch()) << audited;
  // The client that does not read is dropped; the follower that keeps up is not.
  const auto connections = [this] { return control.children().size(); };
  EXPECT_EQ(connections(), 2);
  for (int i = 0; i < 100 && connections() == 2; ++i) {
    const std::string end = "end " + std::to_string(i);
    // From the event loop, as in the server, which deletes dropped clients there.
    QTimer::singleShot(0, &control, [&] {
      for (int line = 0; line < 40; ++line)
        log.Write(std::string(4'000, 'x'));
      log.Write(end);
    });
    ASSERT_TRUE(shows(end));
  }
  EXPECT_EQ(connections(), 1);
  log.Write("the last");
  EXPECT_TRUE(shows("the last"));
  follower.kill();
  follower.waitForFinished();
}

class NetworkTransferTest : public ControlTest {
 protected:
  Outcome Import(const std::string& text) {
    QFile file(myFolder.filePath("network.json"));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text.c_str());
    file.close();
    return Run({"network", "import", file.fileName()});
  }
};

TEST_F(NetworkTransferTest, ExportedNetworkIsImportedByteForByte) {
  Type("ban-address 10.0.0.1 --network North --for 2h spam");
  Type("ban-address 10.0.0.2 elsewhere");
  Query(
      "UPDATE networks SET users=5000, pass=CAST(x'00FF' AS TEXT) WHERE name='North';"
      "INSERT INTO admins(name,address,network) VALUES('Ann','127.0.0.1','North'),"
      "(CAST(x'EFBBBF00E280AE225C27' AS TEXT),'010.0.0.1','North'),"
      "(CAST(x'FFEDA080' AS TEXT),'','North'),('Eve','10.0.0.1','NORTH');"
      "INSERT INTO bans(address,reason,network) VALUES"
      "('2001:DB8:0::1',CAST(x'0AFF' AS TEXT)||hex(zeroblob(2000)),'nORTH')");
  Type("reload");
  const auto rows = [this](const std::string& name) {
    return Query("SELECT hex(pass),users,enabled FROM networks WHERE name='" + name +
                 "'; SELECT hex(name),address FROM admins WHERE network='" + name +
                 "'; SELECT address,hex(reason),until FROM bans LEFT JOIN ban_ends ON "
                 "banid=bans.id WHERE network LIKE '" +
                 name + "'");
  };
  const std::string before = rows("North");
  std::string document = Type("network export North --bans").text;
  EXPECT_EQ(Import(document).exitCode, 1) << "there is a North";
  document.replace(document.find("North"), 5, "South");
  Query("DELETE FROM bans");
  EXPECT_EQ(Import(document).text,
            "Added the network South with 3 administrator(s) and 2 ban(s); skipped 0 and 0 that "
            "are known or have ended.\n");
  EXPECT_EQ(rows("South"), before);
  EXPECT_TRUE(myApp.Op().Listener().FindNetwork("South"));
}

TEST_F(NetworkTransferTest, NetworkIsImportedOnceAndWholeOrNotAtAll) {
  Type("ban-address 10.0.0.1 --for 2h x");
  int number = 0;
  for (const auto& [fields, exitCode, text] :
       {std::tuple<std::string, int, const char*>{"", 0, "0 administrator(s) and 0 ban(s)"},
        {R"("administrators":[{"name":"A","address":"1"},{"address":"1","name":"A"}],)", 0,
         "1 administrator(s) and 0 ban(s); skipped 1 and 0"},
        {R"("bans":[{"address":"10.0.0.1","until":"2001-01-01T00:00:00Z"},{"address":"10.0.0.1",)"
         R"("until":"2090-01-01T00:00:00Z"},{"address":"10.0.0.1","until":)"
         R"("2089-01-01T00:00:00Z"}],)",
         0, "1 ban(s); skipped 0 and 2"},
        {R"("bans":[{"address":"10.0.0.1","until":"2090"}],)", 2, "takes a time"},
        {R"("administrators":[{"name":"A"}],)", 2, "\"address\" is missing"},
        {R"("bans":[1],)", 2, "a list of objects"},
        {R"("format":2,)", 2, "a version"},
        {"[", 2, "not a network's"},
        {std::string(5 << 20, ' '), 2, "too large"},
        {"\"bans\":[{}" + QString(",{}").repeated(20'000).toStdString() + "],", 2, "20000 bans"}}) {
    const Outcome outcome = Import("{\"format\":1," + fields + "\"password\":\"x\",\"name\":\"N" +
                                   std::to_string(++number) + "\"}");
    EXPECT_EQ(outcome.exitCode, exitCode) << number;
    EXPECT_THAT(outcome.text, HasSubstr(text));
  }
  EXPECT_EQ(Query("SELECT * FROM networks WHERE name LIKE 'N_'"), "N1|x|5|1;N2|x|5|1;N3|x|5|1;");
  EXPECT_EQ(Import(R"({"format":1,"name":"X"})").exitCode, 2) << "the password is missing";
  Query("CREATE TRIGGER no BEFORE INSERT ON networks BEGIN SELECT RAISE(ABORT, 'no'); END");
  const Outcome failed =
      Import(R"({"format":1,"name":"X","password":"","bans":[{"address":"1"}],"administrators":)"
             R"([{"name":"A","address":"2"}]})");
  EXPECT_EQ(failed.text, "corvanectl: nothing is stored: database: no\n");
  EXPECT_EQ(Query("SELECT * FROM bans WHERE network='X'; SELECT * FROM admins WHERE network='X'"),
            "");
  EXPECT_FALSE(myApp.Op().Listener().FindNetwork("X"));
}

TEST_F(CommandsTest, BackupIsConsistentWhileTheDatabaseChanges) {
  // Some megabytes, for many steps.
  Query(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<2000)"
      "INSERT INTO bans (address,reason) SELECT 'old', hex(zeroblob(2000)) FROM n");
  const QString file = myFolder.filePath("copy.rsd");
  std::ofstream((file + ".part").toStdString()) << "somebody's";
  QFile::link(myFolder.filePath("Corvane Server.xml"), myFolder.filePath("link.lnk"));
  QDir(myFolder.path()).mkpath("folder");
  QDir(myFolder.path()).mkpath("logs");
  int banned = 0;
  QTimer bans;
  QObject::connect(&bans, &QTimer::timeout, [&] {
    myApp.Op().BanAddress("10.0.0." + std::to_string(++banned), "meanwhile", "");
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
  const struct {
    const char* name;
    bool overwrites;
    const char* text;
  } rows[] = {
      {"copy.rsd", false, "already"},          {"copy.rsd", true, "Made"},
      {"serverdb.rsd", true, "itself uses"},   {"./serverdb.rsd-journal", false, "itself uses"},
      {"Corvane Server", true, "itself uses"}, {"corvane-bans.waiting", false, "itself uses"},
      {"logs/x", true, "itself uses"},         {"link.lnk", true, "not a regular file"},
      {"folder", true, "not a regular file"},  {"none/copy", false, "none/copy: "},
  };
  for (const auto& row : rows) {
    made = Run(
        {"backup", myFolder.path() + '/' + row.name, row.overwrites ? "--overwrite" : "--json"});
    EXPECT_EQ(made.exitCode, row.text == std::string("Made") ? 0 : 1) << row.name;
    EXPECT_THAT(made.text, HasSubstr(row.text));
  }
  EXPECT_THAT(QDir(myFolder.path()).entryList({"copy.rsd*"}),
              ElementsAre("copy.rsd", "copy.rsd.part", "copy.rsd.xml"));
  QFile part(file + ".part");
  EXPECT_TRUE(part.open(QIODevice::ReadOnly) && part.readAll() == "somebody's");
}

}  // namespace
}  // namespace corvane
