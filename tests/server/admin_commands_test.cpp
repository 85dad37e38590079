#include <QDateTime>
#include <QLocale>

#include "platform/processor_time.h"
#include "tests/server/session_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AdminTest : public UsersTest {
 protected:
  AdminTest() { EXPECT_TRUE(AdminsTable(server.database).Add("Ann", "127.0.0.1", "A")); }
};

TEST_F(AdminTest, OnlyAdministratorsOfTheNetworkAreHeeded) {
  EXPECT_TRUE(AdminsTable(server.database).Add("Eve", "127.0.0.1", "A")) << "where she is not";
  EXPECT_TRUE(AdminsTable(server.database).Add("Bob", "127.0.0.1", "A")) << "where he is not";
  for (TestClient* client : {eve.get(), bob.get()}) {
    client->SendBytes(WireBytes(9, "") + WireBytes(10, "Bob|A") + WireBytes(11, "Bob|spam") +
                      WireBytes(12, "hello") + WireBytes(13, "") + WireBytes(14, "1"));
    EXPECT_THAT(client->Drain(), ElementsAre(WireMessage{9, "0"}));
  }
  EXPECT_EQ(server.Query("SELECT count(*) FROM bans"), "0;");
}

TEST_F(AdminTest, KickSendsTheNoticeAndNamesTheLastOneExamined) {
  ann->Send(10, "bOB|a");
  EXPECT_THAT(ann->Drain(), IsEmpty());
  EXPECT_THAT(bob->Drain(), ElementsAre(WireMessage{996, "A"})) << "the reason is the network";
  EXPECT_THAT(server.status, ElementsAre("Eve Kicked: A"));
  EXPECT_EQ(server.ActiveCount(), 3U) << "a kick closes nothing";
  ann->SendBytes(WireBytes(10, "") + WireBytes(10, "no bar") + WireBytes(10, "Bob|B"));
  EXPECT_THAT(ann->Drain(), IsEmpty());
  EXPECT_THAT(bob->Drain(), IsEmpty());
  ann->Send(10, "eve|b");
  EXPECT_THAT(ann->Drain(), IsEmpty());
  EXPECT_THAT(eve->Drain(), ElementsAre(WireMessage{996, "A"}))
      << "the network is the second field";
}

TEST_F(AdminTest, BanStoresARowThatListAndLiftUse) {
  std::vector<std::string> stored;
  const auto connection = server.listener->StatusMessage.Connect([&](MapSocket&, const auto&) {
    stored.push_back(server.Query("SELECT count(*) FROM bans"));
    server.SessionOf("Bob")->SendMessage(998, "after the line");
  });
  ann->SendBytes(WireBytes(9, "") + WireBytes(11, "bob|it's spam") + WireBytes(11, "Eve|x"));
  EXPECT_THAT(ann->Drain(), ElementsAre(WireMessage{9, "1"}));
  EXPECT_THAT(bob->Drain(),
              ElementsAre(WireMessage{997, "it's spam"}, WireMessage{998, "after the line"}));
  EXPECT_THAT(eve->Drain(), IsEmpty());
  EXPECT_THAT(server.status, ElementsAre("Bob Banned: it's spam"));
  EXPECT_THAT(stored, ElementsAre("1;")) << "before anybody hears of it";
  EXPECT_EQ(server.Query("SELECT id, address, \"by\", reason, banlength, network, "
                         "bandate LIKE '____-__-__ __:__:__' FROM bans"),
            "1|127.0.0.2|Ann|it's spam|1|A|1;");

  server.Query("UPDATE bans SET bandate='2026-02-03 21:14:09'");
  const QDateTime date(QDate(2026, 2, 3), QTime(21, 14, 9));
  ann->Send(13, "");
  EXPECT_THAT(
      ann->Drain(),
      ElementsAre(WireMessage{13, "1|127.0.0.2|Ann|it's spam|" +
                                      (QLocale().toString(date.date(), QLocale::ShortFormat) + " " +
                                       QLocale().toString(date.time(), QLocale::ShortFormat))
                                          .toStdString() +
                                      '\0'}));
  for (const char* id : {"", "x", "1x", "0x1", "2", "1 OR 1=1"})
    ann->Send(14, id);
  EXPECT_THAT(ann->Drain(), IsEmpty());
  EXPECT_EQ(server.Query("SELECT count(*) FROM bans"), "1;");
  ann->Send(14, " 1.0 ");
  EXPECT_THAT(ann->Drain(), IsEmpty());
  EXPECT_EQ(server.Query("SELECT count(*) FROM bans"), "0;");

  server.Query("DROP TABLE bans");
  ann->SendBytes(WireBytes(13, ""));
  EXPECT_THAT(ann->Drain(), ElementsAre(WireMessage{13, ""}));
}

TEST_F(AdminTest, BanCountsWhileTheDatabaseIsLockedAndIsStoredAfterwards) {
  {
    OtherProgram reader(server.folder.filePath("serverdb.rsd"));
    reader.Run("BEGIN; SELECT * FROM bans");
    ann->Send(11, "Bob|spam");
    EXPECT_THAT(ann->Drain(), IsEmpty());
    EXPECT_THAT(bob->Drain(), ElementsAre(WireMessage{997, "spam"}));
    EXPECT_EQ(reader.Run("SELECT count(*) FROM bans"), "0;");
    ann->SendBytes(WireBytes(11, "Bob|more") + WireBytes(14, "2000000001") + WireBytes(13, ""));
    const std::string listed = ann->Receive()->payload;
    EXPECT_EQ(listed.substr(0, listed.rfind('|')), "2000000000|127.0.0.2|Ann|spam");
    TestClient again(server.Port(), "127.0.0.2");
    EXPECT_EQ(again.Receive()->command, 997);
  }
  EXPECT_TRUE(PumpUntil(
      [this] { return server.Query("SELECT address, reason FROM bans") == "127.0.0.2|spam;"; }));
}

TEST_F(AdminTest, LongListOfBansIsReadInPortionsAndPaidFor) {
  constexpr int kCount = 3000;
  server.Query("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" +
               std::to_string(kCount) +
               ") INSERT INTO bans(address, \"by\", reason) SELECT '10.0.0.1', i, printf('%1024d', "
               "i) FROM n");
  const auto begin = std::chrono::steady_clock::now();
  const auto workedBefore = ProcessorTime();
  ann->SendBytes(WireBytes(13, "") + WireBytes(9, ""));
  const auto session = server.SessionOf("Ann");
  const auto written = [&] { return server.loop.Counts().sent + session->BytesLeftToSend(); };
  const auto before = written();
  TakeIn(*session);
  session->_Poll();
  EXPECT_EQ(written(), before) << "the rest is read after others were served";
  const std::optional<WireMessage> answer = ann->Receive();
  const auto worked = ProcessorTime() - workedBefore;
  EXPECT_EQ(ann->Receive(), (WireMessage{9, "1"}));
  EXPECT_GT(std::chrono::steady_clock::now() - begin, 3 * worked) << "the list is paid for first";
  std::string expected;
  for (int i = 1; i <= kCount; ++i) {
    const std::string number = std::to_string(i);
    const std::string blanks(1024 - number.size(), ' ');
    for (const std::string& part : {number, std::string("10.0.0.1"), number, blanks + number})
      expected.append(part).append("|");
    expected += '\0';
  }
  EXPECT_TRUE(answer == (WireMessage{13, expected}));
}

TEST_F(AdminTest, MessageReachesTheWholeNetworkAndNoOther) {
  ann->SendBytes(WireBytes(12, "") + WireBytes(12, "hello"));
  EXPECT_THAT(ann->Drain(), ElementsAre(WireMessage{998, "hello"}));
  EXPECT_THAT(bob->Drain(), ElementsAre(WireMessage{998, "hello"}));
  EXPECT_THAT(eve->Drain(), IsEmpty());
}

}  // namespace
}  // namespace corvane
