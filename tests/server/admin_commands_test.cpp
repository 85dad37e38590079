

#include "tests/server/session_fixture.h"

namespace corvane {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

class AdminTest : public UsersTest {
 protected:
  AdminTest() { EXPECT_TRUE(AdminsTable(server.database).Add("Ann", "127.0.0.1", "A")); }
};

TEST_F(AdminTest, CommandsOfNobodysAdministratorAreIgnored) {
  EXPECT_TRUE(AdminsTable(server.database).Add("Eve", "127.0.0.1", "A")) << "where she is not";
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
  ann->SendBytes(WireBytes(10, "") + WireBytes(10, "no bar"));
  EXPECT_THAT(ann->Drain(), IsEmpty());
  EXPECT_THAT(bob->Drain(), IsEmpty());
}

TEST_F(AdminTest, BanStoresARowThatListAndLiftUse) {
  ann->SendBytes(WireBytes(9, "") + WireBytes(11, "bob|it's spam") + WireBytes(11, "Eve|x"));
  EXPECT_THAT(ann->Drain(), ElementsAre(WireMessage{9, "1"}));
  EXPECT_THAT(bob->Drain(), ElementsAre(WireMessage{997, "it's spam"}));
  EXPECT_THAT(eve->Drain(), IsEmpty());
  EXPECT_THAT(server.status, ElementsAre("Bob Banned: it's spam"));
  EXPECT_EQ(server.Query("SELECT id, address, \"by\", reason, banlength, network, "
                         "bandate LIKE '____-__-__ __:__:__' FROM bans"),
            "1|127.0.0.1|Ann|it's spam|1|A|1;");

  ann->Send(13, "");
  const auto list = ann->Receive();
  ASSERT_TRUE(list);
  EXPECT_EQ(list->command, 13);
  EXPECT_THAT(list->payload, testing::StartsWith("1|127.0.0.1|Ann|it's spam|"));
  EXPECT_THAT(list->payload, EndsWith("\0"s));
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

TEST_F(AdminTest, MessageReachesTheWholeNetworkAndNoOther) {
  ann->SendBytes(WireBytes(12, "") + WireBytes(12, "hello"));
  EXPECT_THAT(ann->Drain(), ElementsAre(WireMessage{998, "hello"}));
  EXPECT_THAT(bob->Drain(), ElementsAre(WireMessage{998, "hello"}));
  EXPECT_THAT(eve->Drain(), IsEmpty());
}

}  // namespace
}  // namespace corvane
