#include "framework/dates.h"
#include "storage/admins_table.h"
#include "storage/bans_table.h"
#include "storage/networks_table.h"
#include "tests/storage/database_fixture.h"

namespace corvane {
namespace {

class TablesTest : public DatabaseTest {
 protected:
  TablesTest() { EXPECT_TRUE(connection.Connect(file)); }

  NetworksTable networks{connection};
  BansTable bans{connection};
  AdminsTable admins{connection};
};

TEST_F(TablesTest, SchemaAppliedAgainKeepsTheRows) {
  networks.Add("home", "secret", 5, true);
  MakeDatabase(file);
  EXPECT_EQ(Run("SELECT * FROM networks"), "home|secret|5|1;");
}

TEST_F(TablesTest, QueriesOfEveryLoginUseTheIndexes) {
  const auto plan = [this](const std::string& query) { return Run("EXPLAIN QUERY PLAN " + query); };
  EXPECT_NE(
      plan("SELECT * FROM bans WHERE address='10.0.0.1'").find("INDEX bans_by_address (address=?)"),
      std::string::npos);
  EXPECT_NE(plan("SELECT * FROM admins WHERE name='a' AND network='n' AND address='10.0.0.1'")
                .find("INDEX admins_by_grant (name=? AND network=? AND address=?)"),
            std::string::npos);
}

TEST_F(TablesTest, NetworksAreAddedChangedAndDeletedByName) {
  networks.Add("home", "secret", 5, true);
  networks.Add("away", "", -1, false);
  networks.Add("home", "second", 5, true);
  networks.Change("home", "it's new", 9, false);
  EXPECT_FALSE(connection.Error());
  EXPECT_EQ(Run("SELECT * FROM networks"), "home|it's new|9|0;away||-1|0;home|second|5|1;");
  networks.Delete("home");
  EXPECT_EQ(Run("SELECT * FROM networks"), "away||-1|0;home|second|5|1;");
  auto rows = networks.All();
  ASSERT_TRUE(rows);
  EXPECT_EQ(rows->Text("name"), "away");
}

TEST_F(TablesTest, NameOfNoRowChangesNothingAndIsNoError) {
  networks.Add("home", "secret", 5, true);
  for (const char* name : {"Home", "", "nowhere"}) {
    networks.Change(name, "new", 1, false);
    EXPECT_FALSE(connection.Error());
    networks.Delete(name);
    EXPECT_FALSE(connection.Error());
  }
  EXPECT_EQ(Run("SELECT * FROM networks"), "home|secret|5|1;");
}

TEST_F(TablesTest, QuoteInANameChangesTheStatement) {
  networks.Add("it's", "secret", 5, true);
  networks.Add("home", "secret", 5, true);
  networks.Change("it's", "new", 1, false);
  EXPECT_TRUE(connection.Error());
  EXPECT_EQ(connection.ErrorMessage(), "near \"s\": syntax error");
  networks.Delete("it's");
  EXPECT_EQ(Run("SELECT * FROM networks"), "it's|secret|5|1;home|secret|5|1;");

  networks.Delete("x' OR name='home");
  EXPECT_EQ(Run("SELECT * FROM networks"), "it's|secret|5|1;");
  EXPECT_FALSE(admins.IsAdmin("it's", "home", "10.0.0.1"));
  EXPECT_FALSE(admins.IsAdmin("x' OR '1'='1", "home", "10.0.0.1"));
  admins.Add("op", "10.0.0.1", "home");
  EXPECT_TRUE(admins.IsAdmin("x' OR '1'='1' --", "", ""));
  EXPECT_FALSE(
      admins.IsAdmin("x' OR (WITH RECURSIVE r(n) AS (SELECT 1 UNION ALL SELECT n FROM r) "
                     "SELECT sum(n) FROM r) OR '",
                     "home", "10.0.0.1"))
      << "a query that would never end";
  EXPECT_TRUE(connection.Error());
}

TEST_F(TablesTest, BanHoldsForItsAddressUntilItIsLifted) {
  EXPECT_FALSE(bans.IsBanned("10.0.0.1"));
  const QDateTime before = DateFromStored(StoredDate(QDateTime::currentDateTime()));
  bans.Add("10.0.0.1", "Server Admin", "it's a reason", "home");
  bans.Add("10.0.0.2", "op", "", "");
  const QDateTime after = QDateTime::currentDateTime();
  EXPECT_TRUE(bans.IsBanned("10.0.0.1"));
  EXPECT_FALSE(bans.IsBanned("10.0.0.10"));
  EXPECT_EQ(Run("SELECT id,address,\"by\",reason,banlength,network FROM bans"),
            "1|10.0.0.1|Server Admin|it's a reason|1|home;2|10.0.0.2|op||1|;");

  const auto all = bans.All();
  ASSERT_TRUE(all);
  ASSERT_EQ(all->size(), 2U);
  EXPECT_EQ(all->at(0).id, 1);
  EXPECT_EQ(all->at(0).address, "10.0.0.1");
  EXPECT_EQ(all->at(0).by, "Server Admin");
  EXPECT_EQ(all->at(0).reason, "it's a reason");
  EXPECT_LE(before, all->at(0).bandate);
  EXPECT_LE(all->at(0).bandate, after);

  bans.Delete("2");
  EXPECT_FALSE(bans.IsBanned("10.0.0.2"));
  EXPECT_TRUE(bans.IsBanned("10.0.0.1"));
  bans.Delete(std::vector<std::int64_t>{1, 77});
  EXPECT_EQ(bans.All()->size(), 0U);
  bans.Add("10.0.0.3", "op", "", "");
  EXPECT_EQ(bans.All()->at(0).id, 3);  // no number comes back
}

TEST_F(TablesTest, GrantHoldsForNameNetworkAndAddressTogether) {
  admins.Add("op", "10.0.0.1", "home");
  admins.Add("op", "10.0.0.2", "away");
  EXPECT_TRUE(admins.IsAdmin("op", "home", "10.0.0.1"));
  EXPECT_FALSE(admins.IsAdmin("op", "away", "10.0.0.1"));
  EXPECT_FALSE(admins.IsAdmin("op", "home", "10.0.0.2"));
  EXPECT_FALSE(admins.IsAdmin("Op", "home", "10.0.0.1"));
  const auto all = admins.All();
  ASSERT_TRUE(all);
  ASSERT_EQ(all->size(), 2U);
  EXPECT_EQ(all->at(1).id, 2);
  EXPECT_EQ(all->at(1).name, "op");
  EXPECT_EQ(all->at(1).network, "away");
  EXPECT_EQ(all->at(1).address, "10.0.0.2");
  admins.Delete({1});
  EXPECT_FALSE(admins.IsAdmin("op", "home", "10.0.0.1"));
  EXPECT_TRUE(admins.IsAdmin("op", "away", "10.0.0.2"));
}

TEST_F(TablesTest, FailedQueryBansNobodyAndGrantsNothing) {
  bans.Add("10.0.0.1", "op", "", "");
  admins.Add("op", "10.0.0.1", "home");
  OtherProgram other(file);
  other.Run("BEGIN EXCLUSIVE");
  EXPECT_FALSE(bans.IsBanned("10.0.0.1"));
  EXPECT_FALSE(admins.IsAdmin("op", "home", "10.0.0.1"));
  EXPECT_FALSE(bans.All());
  EXPECT_FALSE(admins.All());
  EXPECT_FALSE(networks.All());
  bans.Delete(std::vector<std::int64_t>(1000, 1));  // waits for the lock once, not for each
  EXPECT_EQ(connection.ErrorMessage(), "database is locked");
}

TEST_F(TablesTest, TablesOfAnotherShapeAreReadAsFarAsTheyGo) {
  Run("DROP TABLE bans; CREATE TABLE bans(extra, ID, address, reason, bandate);"
      "INSERT INTO bans VALUES(x'00','12x',1.5,NULL,'never')");
  const auto all = bans.All();
  ASSERT_TRUE(all);
  ASSERT_EQ(all->size(), 1U);
  EXPECT_EQ(all->front().id, 12);
  EXPECT_EQ(all->front().address, "1.5");
  EXPECT_EQ(all->front().by, "");
  EXPECT_EQ(all->front().reason, "");
  EXPECT_FALSE(all->front().bandate.isValid());
}

}  // namespace
}  // namespace corvane
