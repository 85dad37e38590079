#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QTemporaryFile>

#include "framework/text.h"
#include "tests/control/control_fixture.h"

namespace corvane {
namespace {

using testing::HasSubstr;

using CorvanectlTest = ControlTest;

TEST_F(CorvanectlTest, CommandsAnswerAndActOnTheServer) {
  const std::string networks = "SELECT name,pass,users,enabled FROM networks WHERE name='Guild'";
  const std::string bans = "SELECT address,\"by\",reason,network FROM bans";
  const std::string admins = "SELECT name,address,network FROM admins";
  const std::string guild = "Guild|p\xC3\xA4ss|7|1;";
  const std::string bobsBan = "127.0.0.2|Server Admin|so there|North;";
  const std::string ipv6Ban = "2001:db8::1|Server Admin|x|;";
  const std::string ranges = "SELECT first,last,reason FROM ban_ranges";
  const std::string both = bans + ";" + ranges;
  // In a folder without blanks, which separate arguments.
  QTemporaryFile file(QDir::tempPath() + "/corvane-bans");
  EXPECT_TRUE(file.open());
  const QString list = file.fileName();
  file.write("\xEF\xBB\xBF# a list\n10.0.0.1 ; one\n\nx\r\n10.0.2.0/24\n10.0.0.1\n2001:DB8:0::1#");
  file.close();
  const std::string annsGrant = "Ann|127.0.0.1|North;";
  const std::string evesGrant = "Eve|10.0.0.9|North;";
  struct Row {
    QString line;
    int exitCode;
    std::string text;        // part of the output
    std::string query = {};  // if any
    std::string found = {};
    const char* input = "";
  };
  for (const Row& row : std::vector<Row>{
           {"status", 0, "North    2      5          yes"},
           {"status --json", 0, R"("reachable-at":["127.0.0.1:)"},
           {"tunnel haproxy --domain a.example", 0, "\n#      corvanectl check-reach a.example:12"},
           {"tunnel stunnel --domain a\nb", 2, "takes a host name"},
           {"check-reach 127.0.0.1:1", 1, "127.0.0.1:1: cannot connect: "},
           {"check-reach 127.0.0.1:x", 2, "HOST is a name"},
           {"check-reach 127.0.0.1 --fingerprint 0g", 2, "takes 64 hex"},
           {"users", 0, "Bob   North    127.0.0.2:"},
           {"users --network so\nuth --json", 0, R"("rows":[])"},
           {"users --network x", 1, "there is no network \"x\""},
           {"network add Guild --max-users 7", 0, "Added", networks, guild, "p\xC3\xA4ss\n"},
           {"network add guild", 1, "already", networks, guild, "x\n"},
           {"network add Club", 2, "no password"},
           {"network edit GUILD --disable --max-users 1001", 2,
            "\"max-users\" takes a number from 1 to 1000", networks, guild},
           {"network edit GUILD --disable --password-file -", 0, "Changed", networks,
            "Guild|new|7|0;", "new"},
           {"network edit GUILD --enable", 0, "Changed", networks, "Guild|new|7|1;"},
           {"network edit GUILD", 2, "--max-users, --enable, --disable, --password-f"},
           {"network edit GUILD --enable --disable", 2, "not both"},
           {"networks --json", 0, R"({"enabled":true,"max-users":7,"name":"Guild","users":0})"},
           {"network delete Guild", 0, "Deleted", networks, ""},
           {"message --network north good day", 0, "Sent"},
           {"kick ann -- -o-", 0, "Kicked Ann"},
           {"kick Eve why", 1, "nobody \"Eve\""},
           {"kick Ann", 2, "REASON is missing\nUsage: corvanectl kick [OPTION...] USER REASON..."},
           {"kick  x", 2, "USER is empty"},
           {"status now", 2, "\"now\" is one argument too many"},
           {"log --lines x", 2, "--lines takes a number, not \"x\""},
           {"users --network ", 2, "--network is empty"},
           {"ban bob so there", 0, "Banned 127.0.0.2", bans, bobsBan},
           {"ban-address 10.1 x", 2, "takes an address"},
           {"ban-address 10.0.0.1 x --network x", 1, "no network \"x\""},
           {"ban-address 2001:DB8:0::1 x", 0, "Banned", bans, bobsBan + ipv6Ban},
           {"bans", 0, "2001:db8::1  Server Admin  x"},
           {"unban 127.0.0.2", 0, "Lifted 1", bans, ipv6Ban},
           {"unban 2001:db8:0::1", 0, "Lifted 1", bans, ""},
           {"ban-address 10.0.0.1 --for 2x", 2, "takes a time such as"},
           {"ban-address 10.0.0.1 --for 530w", 2, "up to ten years"},
           {"ban-address 10.0.0.1 --for 2d x", 0, "Banned 10.0.0.1 until 2"},
           {"bans", 0, "1d 23h\n"},
           {"unban 10.0.0.1", 0, "Lifted 1", bans + "; SELECT * FROM ban_ends", ""},
           {"ban-range 10.0.0.1/8", 2, "beyond its length; expected 10.0.0.0/8"},
           {"ban-range 2001:db8::/32", 2, "IPv6 addresses cannot be banned as ranges"},
           {"ban-range 10.0.0.9-10.0.0.1", 2, "is no address or range"},
           {"ban-range 0.0.0.0/0 --force", 2, "within 1.0.0.0-223.255.255.255"},
           {"ban-range 255.255.255.255", 2, "within 1.0.0.0-223.255.255.255"},
           {"ban-range 10.0.0.0/7", 1, "33554432 addresses, more than a /8; use --force"},
           {"ban-range 127.0.0.0/30 --dry-run", 0, "disconnect 2 connected", ranges, ""},
           {"ban-range 10.0.0.0/7 --force --for 1h w", 0, "banned 10.0.0.0/7 until", ranges,
            "167772160|201326591|w;"},
           {"bans --ranges", 0, "59m 59s\n"},
           {"unban-range 10.0.0.0/7", 0, "Lifted 1", ranges, ""},
           {"bans import " + list + " from elsewhere", 2, "line 4: \"x\" is no address or range",
            bans, ""},
           {"bans import --skip " + list + " from elsewhere", 0,
            "2 address(es) and 1 range(s) that were not banned yet; skipped 1", both,
            "10.0.0.1|Server Admin|from elsewhere|;2001:db8::1|Server Admin|from elsewhere|;"
            "167772672|167772927|from elsewhere;"},
           {"bans import --skip --for 1h " + list, 0, "0 address(es) and 0 range(s)"},
           {"ban-address 0.0.0.0", 0, "Banned"},
           {"bans export", 0,
            "\n10.0.0.1\n2001:db8::1\n# no client's address: 0.0.0.0\n10.0.2.0/24\n"},
           {"unban 0.0.0.0", 0, "Lifted 1"},
           {"unban 2001:DB8::1", 0, "Lifted 1"},
           {"unban 10.0.0.1", 0, "Lifted 1", bans, ""},
           {"unban-range 1", 0, "Lifted 1", ranges, ""},
           {"bans import /nowhere x", 2, "/nowhere: "},
           {"grant ann", 0, "Ann is", admins, annsGrant},
           {"grant ann", 1, "is already an administrator", admins, annsGrant},
           {"grant Eve --network north", 2, "expected both"},
           {"grant Eve --network north --address 1.2.3", 2, "not \"1.2.3\""},
           {"grant Eve --network north --address 10.0.0.9", 0, "", admins, annsGrant + evesGrant},
           {"admins", 0, "2   Eve   North    10.0.0.9"},
           {"revoke ANN", 0, "Revoked 1", admins, evesGrant},
           {"set AtachedPort 1", 1, "AttachedNIC, AttachedPort, StartHidden"},
           {"set port 13000", 0, "Set, but the server ignores Port; its port is AttachedPort."},
           {"set --force Prt 1", 0, "Set, but the server does not know Prt."},
           {"set AttachedPort 70000", 2, "a port from 0 to 65535"},
           {"set hardened maybe", 2, "Hardened takes 1, yes"},
           {"set AttachedPort 12345", 0, "Set"},
           {"settings --json", 0, R"({"name":"AttachedPort","value":"12345"})"},
           {"network disconnect north", 0, "Disconnected the users"},
           {"frob", 2, "no command"},
           {"status --data-folder ", 2, "--data-folder is empty"},
           {"--json", 2, "no command\n\nUsage"},
           {"network", 2, "\n  network disconnect    Disconnects"},
           {"network x", 2, "no command \"network x\""},
           {"network --help", 0, "\n  network add           Adds"},
           {"help", 0, "\n  kick "},
           {"help network", 0, "\n  network add "},
           {"kick --help", 0, "\nUsage: corvanectl kick [OPTION...] USER REASON...\n"},
           {"help kick", 0, "\n  --name                USER is"},
           {"complete -- --json network e", 0, "\nedit\tChanges"},
           {"complete -- network edit --e", 0, "\n--enable\tLet users in.\n"},
           {"complete -- --data-folder /x st", 0, "\nstatus\tShows"},
           {"complete -- --data-folder ", 0, ":folders\n"},
           {"complete -- kick x", 0, ""},
           {"complete -- backup --overwrite x", 0, ":files\n"},
       }) {
    SCOPED_TRACE(row.line.toStdString());
    const Outcome outcome = Type(row.line, row.input);
    EXPECT_EQ(outcome.exitCode, row.exitCode);
    EXPECT_THAT('\n' + outcome.text, HasSubstr(row.text));
    EXPECT_EQ(Query(row.query), row.found);
  }
  for (const WireMessage& heard : {WireMessage{998, "good day"}, {996, "-o-"}, {999, "BYE"}})
    EXPECT_EQ(ann->Receive(), heard);
  EXPECT_EQ(bob->Receive(), (WireMessage{998, "good day"}));
  EXPECT_EQ(bob->Receive(), (WireMessage{997, "so there"}));
}
TEST_F(CorvanectlTest, AddressAndPortIsANameOnlyWithTheOption) {
  const QString peer = DisplayText(myApp.Op().FindUser("Bob", true)->PeerName());
  const auto eve = LoggedIn(TextFromDisplay(peer), "North", "127.0.0.3");
  EXPECT_THAT(Run({"kick", peer, "x"}).text, HasSubstr("Kicked Bob."));
  EXPECT_EQ(Run({"disconnect", peer}).exitCode, 0);
  EXPECT_TRUE(bob->WasClosedByServer());
  const Outcome missed = Run({"ban", peer, "x"});
  EXPECT_EQ(missed.exitCode, 1);
  EXPECT_THAT(missed.text, HasSubstr("nobody"));
  EXPECT_EQ(Run({"ban", peer, "--name", "x"}).exitCode, 0);
  EXPECT_EQ(Query("SELECT address FROM bans"), "127.0.0.3;");

  myApp.Listener().ProxyAddresses = AddressRanges("127.0.0.4");
  TestClient proxied(myApp.Listener().Port(), "127.0.0.4");
  proxied.SendBytes("PROXY TCP6 2001:db8::17 ::1 443 1\r\n");
  EXPECT_TRUE(proxied.Login("North", "secret", "Fay"));
  EXPECT_THAT(Run({"kick", "[2001:db8::17]:443", "x"}).text, HasSubstr("Kicked Fay."));
}

TEST_F(CorvanectlTest, FailuresAreReported) {
  OtherProgram(myFolder.filePath("serverdb.rsd")).Run("ALTER TABLE bans RENAME TO b");
  for (const QStringList& ban :
       {QStringList{"ban", "Bob", "x"}, {"ban-address", "10.0.0.1", "x"}}) {
    const Outcome banned = Run(ban);
    EXPECT_EQ(banned.exitCode, 0) << "it counts";
    EXPECT_THAT(banned.text, HasSubstr("in force but not stored (database: no such table: bans)"));
  }
  OtherProgram(myFolder.filePath("serverdb.rsd")).Run("ALTER TABLE b RENAME TO bans");
  EXPECT_TRUE(PumpUntil([&] { return Query("SELECT count(*) FROM bans") == "2;"; }));
  EXPECT_EQ(Run({"unban", "2000000001"}).text, "Lifted 1 ban(s).\n") << "as it was listed before";

  // A folder in place of the file, which fails like a full disk.
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

TEST_F(CorvanectlTest, AnswersCannotMisleadOrFloodTheTerminal) {
  QTemporaryDir other;
  QLocalServer impostor;
  ASSERT_TRUE(impostor.listen(LocalSocketName(other.path(), kServerSocket)));
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
