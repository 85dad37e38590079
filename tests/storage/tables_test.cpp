#include <gmock/gmock.h>

#include "framework/dates.h"
#include "storage/admins_table.h"
#include "storage/bans_table.h"
#include "storage/networks_table.h"
#include "tests/storage/database_fixture.h"

namespace corvane {
namespace {

using testing::HasSubstr;

class TablesTest : public DatabaseTest {
 protected:
  TablesTest() { EXPECT_TRUE(connection.Connect(file)); }

  NetworksTable networks{connection};
  BansTable bans{connection};
  AdminsTable admins{connection};
};

TEST_F(TablesTest, QueriesOfEveryLoginUseTheIndexes) {
  const auto plan = [this](const std::string& query) { return Run("EXPLAIN QUERY PLAN " + query); };
  EXPECT_THAT(plan("SELECT * FROM bans WHERE address='a'"),
              HasSubstr("INDEX bans_by_address (address=?)"));
  EXPECT_THAT(plan("SELECT * FROM admins WHERE name='a' AND network='n' AND address='a'"),
              HasSubstr("INDEX admins_by_grant (name=? AND network=? AND address=?)"));
}

TEST_F(TablesTest, NetworksAreChangedAndDeletedByExactName) {
  networks.Add("home", "secret", 5, true);
  networks.Add("away", "", -1, false);
  networks.Add("home", "second", 5, true);
  networks.Change("home", "it's new", 9, false);
  MakeDatabase(file);  // the script keeps what is there
  for (const char* name : {"Home", "", "nowhere"}) {
    networks.Change(name, "new", 1, false);
    networks.Delete(name);
    EXPECT_FALSE(connection.Error()) << name;
  }
  EXPECT_EQ(Run("SELECT * FROM networks"), "home|it's new|9|0;away||-1|0;home|second|5|1;");
  networks.Delete("home");
  EXPECT_EQ(Run("SELECT * FROM networks"), "away||-1|0;home|second|5|1;");
}

TEST_F(TablesTest, QuoteInANameChangesTheStatement) {
  networks.Add("it's", "secret", 5, true);
  networks.Add("home", "secret", 5, true);
  networks.Change("it's", "new", 1, false);
  EXPECT_EQ(connection.ErrorMessage(), "near \"s\": syntax error");
  networks.Delete("it's");
  networks.Delete("home'; DELETE FROM networks; --");  // text behind the first statement is not run
  EXPECT_EQ(Run("SELECT * FROM networks"), "it's|secret|5|1;");
  networks.Add("home", "secret", 5, true);
  networks.Delete("x' OR name='home");
  EXPECT_EQ(Run("SELECT * FROM networks"), "it's|secret|5|1;");
  EXPECT_FALSE(admins.IsAdmin("it's", "home", "10.0.0.1"));
  EXPECT_FALSE(admins.IsAdmin("x' OR '1'='1", "home", "10.0.0.1"));
  admins.Add("op", "10.0.0.1", "home");
  EXPECT_TRUE(admins.IsAdmin("x' OR '1'='1' --", "", ""));
}

TEST_F(TablesTest, QueryThatAClientMakesExpensiveFails) {
  admins.Add("op", "10.0.0.1", "home");  // without a row nothing is evaluated
  Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<50)"
      "INSERT INTO bans(address) SELECT '10.0.0.9' FROM n");
  for (const char* expensive :
       {"WITH RECURSIVE r(n) AS (SELECT 1 UNION ALL SELECT n FROM r) SELECT n FROM r WHERE n=2",
        "SELECT hex(randomblob(100000000))",
        "SELECT 1 FROM bans a, bans b, bans c, bans d, bans e, bans f WHERE a.id+b.id+f.id<0"}) {
    admins.IsAdmin(std::string("x' OR (") + expensive + ") OR '", "home", "10.0.0.1");
    EXPECT_TRUE(connection.Error()) << expensive;
  }
  EXPECT_TRUE(bans.IsBanned("10.0.0.9")) << "the bound holds for that query only";
}

TEST_F(TablesTest, BanHoldsForItsAddressUntilItIsLifted) {
  const QDateTime before = DateFromStored(StoredDate(QDateTime::currentDateTime()));
  bans.Add("10.0.0.1", "Server Admin", "it's a reason", "home");
  bans.Add("10.0.0.2", "op", "", "");
  EXPECT_TRUE(bans.IsBanned("10.0.0.1"));
  EXPECT_FALSE(bans.IsBanned("10.0.0.10"));
  const auto all = bans.All();
  ASSERT_TRUE(all && all->size() == 2);
  EXPECT_EQ(all->at(0).by, "Server Admin");
  EXPECT_LE(before, all->at(0).bandate);
  EXPECT_LE(all->at(0).bandate, QDateTime::currentDateTime());

  bans.Delete(std::vector<std::int64_t>{2, 77});
  EXPECT_FALSE(bans.IsBanned("10.0.0.2"));
  bans.Add("10.0.0.3", "op", "", "");
  EXPECT_EQ(bans.All()->at(1).id, 3);  // no number comes back
}

TEST_F(TablesTest, GrantHoldsForNameNetworkAndAddressTogether) {
  admins.Add("op", "10.0.0.1", "home");
  admins.Add("op", "10.0.0.2", "away");
  EXPECT_TRUE(admins.IsAdmin("op", "home", "10.0.0.1"));
  EXPECT_FALSE(admins.IsAdmin("op", "away", "10.0.0.1"));
  EXPECT_FALSE(admins.IsAdmin("op", "home", "10.0.0.2"));
  EXPECT_FALSE(admins.IsAdmin("Op", "home", "10.0.0.1"));
  admins.Delete({1});
  EXPECT_FALSE(admins.IsAdmin("op", "home", "10.0.0.1"));
  EXPECT_TRUE(admins.IsAdmin("op", "away", "10.0.0.2"));
}

TEST_F(TablesTest, LockOfAnotherProgramBansNobodyGrantsNothingAndPasses) {
  bans.Add("10.0.0.1", "op", "", "");
  admins.Add("op", "10.0.0.1", "home");
  {
    OtherProgram other(file);
    other.Run("BEGIN EXCLUSIVE");
    EXPECT_FALSE(bans.IsBanned("10.0.0.1"));
    EXPECT_FALSE(admins.IsAdmin("op", "home", "10.0.0.1"));
    EXPECT_FALSE(bans.All() || admins.All() || networks.All());
    EXPECT_FALSE(DatabaseConnection().Connect(file));
    bans.Delete(std::vector<std::int64_t>(1000, 1));  // waits for the lock once, not for each
    EXPECT_EQ(connection.ErrorMessage(), "database is locked");
  }
  EXPECT_TRUE(bans.IsBanned("10.0.0.1"));
}

}  // namespace
}  // namespace corvane
