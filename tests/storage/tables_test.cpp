#include <algorithm>
#include <chrono>
#include <fstream>
#include <optional>
#include <thread>

#include <QElapsedTimer>
#include <gmock/gmock.h>
#include <sqlite3.h>

#include "storage/admins_table.h"
#include "storage/bans.h"
#include "storage/database_backup.h"
#include "storage/networks_table.h"
#include "storage/stranger_guard.h"
#include "tests/storage/database_fixture.h"

namespace corvane {
namespace {

using testing::HasSubstr;

class TablesTest : public DatabaseTest {
 protected:
  bool Ban(const std::string& address) { return bans.Add(address, "op", "it's a reason", "home"); }

  const bool isConnected = connection.Connect(file);
  NetworksTable networks{connection};
  Bans bans{connection};
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
  EXPECT_TRUE(networks.Add("home", "secret", 5, true));
  EXPECT_TRUE(networks.Add("away", "", -1, false));
  EXPECT_TRUE(networks.Add("home", "second", 5, true));
  EXPECT_TRUE(networks.Change("home", "it's new", 9, false));
  MakeDatabase(file);  // the script keeps what is there
  for (const char* name : {"Home", "", "nowhere"}) {
    EXPECT_TRUE(networks.Change(name, "new", 1, false)) << name;
    EXPECT_TRUE(networks.Delete(name)) << name;
  }
  EXPECT_EQ(Run("SELECT * FROM networks"), "home|it's new|9|0;away||-1|0;home|second|5|1;");
  EXPECT_TRUE(networks.Delete("home"));
  EXPECT_EQ(Run("SELECT * FROM networks"), "away||-1|0;home|second|5|1;");
}

TEST_F(TablesTest, QuoteInANameChangesTheStatement) {
  EXPECT_TRUE(networks.Add("it's", "secret", 5, true));
  EXPECT_TRUE(networks.Add("home", "secret", 5, true));
  EXPECT_FALSE(networks.Change("it's", "new", 1, false));
  EXPECT_EQ(connection.ErrorMessage(), "near \"s\": syntax error");
  EXPECT_FALSE(networks.Delete("it's"));
  EXPECT_TRUE(networks.Delete(
      "home'; DELETE FROM networks; --"));  // text after the first statement is not run
  EXPECT_EQ(Run("SELECT * FROM networks"), "it's|secret|5|1;");
  EXPECT_TRUE(networks.Add("home", "secret", 5, true));
  EXPECT_TRUE(networks.Delete("x' OR name='home"));
  EXPECT_EQ(Run("SELECT * FROM networks"), "it's|secret|5|1;");
  EXPECT_FALSE(admins.IsAdmin("it's", "home", "10.0.0.1"));
  EXPECT_FALSE(admins.IsAdmin("x' OR '1'='1", "home", "10.0.0.1"));
  EXPECT_TRUE(admins.Add("op", "10.0.0.1", "home"));
  EXPECT_FALSE(admins.IsAdmin("Op", "home", "10.0.0.1"));
}

TEST_F(DatabaseTest, BoundValueIsNeverMoreThanAValue) {
  EXPECT_TRUE(connection.Connect(file));
  NetworksTable networks(connection, StatementValues::Bound);
  AdminsTable admins(connection, StatementValues::Bound);
  EXPECT_TRUE(networks.Add("it's", "secret", 5, true) && networks.Add("home", "secret", 5, true));
  EXPECT_TRUE(networks.Change("it's", "new", 1, false));
  EXPECT_TRUE(networks.Delete("x' OR name='home"));
  EXPECT_EQ(Run("SELECT * FROM networks"), "it's|new|1|0;home|secret|5|1;");
  EXPECT_TRUE(networks.Delete("it's"));
  EXPECT_TRUE(admins.Add("op", "10.0.0.1", "home") && admins.Add("o'p", "10.0.0.1", "home"));
  EXPECT_FALSE(admins.IsAdmin("x' OR '1'='1' --", "home", "10.0.0.1"));
  EXPECT_TRUE(admins.IsAdmin("o'p", "home", "10.0.0.1"));
  EXPECT_TRUE(admins.Delete({1}));
  EXPECT_TRUE(admins.IsAdmin("o'p", "home", "10.0.0.1"));
  EXPECT_EQ(Run("SELECT name FROM networks") + Run("SELECT id FROM admins"), "home;2;");
}

TEST_F(TablesTest, NameThatIsMoreThanANameTakesLittleAndReadsGrantsOnly) {
  EXPECT_TRUE(admins.Add("op", "10.0.0.1", "home"));  // without a row nothing is evaluated
  for (const char* text : {"x' OR '1'='1' --", "x' UNION SELECT 1,2,3,4 --",
                           "x' OR EXISTS(SELECT 1 FROM admins a, ADMINS b WHERE a.id=b.id) --"})
    EXPECT_TRUE(admins.IsAdmin(text, "", "")) << text;
  Run("INSERT INTO networks VALUES('home','secret',1,1);"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<50)"
      "INSERT INTO admins(name) SELECT i FROM n");
  const auto repeated = [](const std::string& text, int count) {
    std::string all;
    while (count-- > 0)
      all += text;
    return all;
  };
  std::string doubled = "(SELECT 'aaaa' a FROM admins)";
  for (int i = 0; i < 7; ++i) {
    doubled.insert(0, "(SELECT a" + repeated("||a", 29) + " a FROM ");
    doubled += ')';
  }
  std::string tables = "a0 AS (SELECT 1 c)";
  for (int i = 1; i < 24; ++i) {
    const std::string before = "a" + std::to_string(i - 1);
    tables.append(",a").append(std::to_string(i)).append(" AS (SELECT ").append(before);
    tables.append(".c FROM ").append(before).append(",").append(before).append(" b)");
  }
  const std::string texts[] = {
      "WITH RECURSIVE r(n) AS (SELECT 1 UNION ALL SELECT n FROM r) SELECT n FROM r WHERE n=2",
      "wItH " + tables + " SELECT * FROM a23",
      "WITH admins AS (SELECT pass FROM networks WHERE pass>'a') SELECT 1 FROM admins",
      "SELECT 1 FROM admins" + repeated(" NATURAL JOIN admins", 40),
      "SELECT 1 FROM admins" + repeated(",admins", 63),
      "SELECT 1 FROM (SELECT 1)" + repeated(",(SELECT 1)", 20),
      "SELECT 1 FROM (SELECT 'secret' pass) NATURAL JOIN networks",
      "SELECT 1 FROM networks WHERE pass>'a'",
      "SELECT 1 FROM bans",
      "SELECT hex(randomblob(100000000))",
      "SELECT 1 FROM " + doubled + " WHERE a>''",
      "SELECT 1 FROM admins a, admins b, admins c, admins d, admins e WHERE a.id+b.id+e.id<0",
      "SELECT 1" + repeated(" UNION SELECT 1", 8),
      "SELECT 1" + repeated("+1", 200),
      "SELECT '" + std::string(20'000, 'a') + "'",
  };
  for (const std::string& text : texts) {
    SCOPED_TRACE(text.substr(0, 80));
    sqlite3_memory_highwater(1);
    const auto before = sqlite3_memory_used();
    EXPECT_FALSE(admins.IsAdmin("x' OR EXISTS(" + text + ") OR name>'' --", "home", "10.0.0.1"));
    EXPECT_TRUE(connection.Error());
    EXPECT_LT(sqlite3_memory_highwater(0) - before, 5 << 20);
  }
  // The bounds apply to that query only.
  EXPECT_EQ(sqlite3_hard_heap_limit64(-1), 0);
  EXPECT_EQ(sqlite3_soft_heap_limit64(-1), 0);
  const std::string large(200'000, 'n');
  EXPECT_TRUE(admins.Add(large, "10.0.0.1", "home"));
  EXPECT_TRUE(admins.IsAdmin(large, "home", "10.0.0.1"));
}

TEST_F(TablesTest, AdminsMayBeAViewOfTheOperators) {
  Run("DROP TABLE admins;"
      "CREATE TABLE people(who, network, rank); CREATE TABLE ranks(rank);"
      "INSERT INTO people VALUES('op', 'home', 'Chief'), ('x', 'home', NULL);"
      "INSERT INTO ranks VALUES('chief');"
      "CREATE VIEW admins AS SELECT rowid id, coalesce(who, '') name, lower(network) network,"
      " '10.0.0.1' address FROM people p WHERE rank LIKE 'ch%' AND EXISTS"
      " (SELECT 1 FROM ranks r WHERE r.rank=lower(p.rank))");
  for (const char* name : {"op", "x' OR '1'='1", "x' UNION SELECT 1,2,3,4 FROM admins --"})
    EXPECT_TRUE(admins.IsAdmin(name, "home", "10.0.0.1")) << connection.ErrorMessage();
  for (const char* name : {"x", "x' OR EXISTS(SELECT 1 FROM people WHERE who>'') OR '1'='1",
                           "x' OR lower('A')='a' OR '1'='1"})
    EXPECT_FALSE(admins.IsAdmin(name, "home", "10.0.0.1")) << name;
}

TEST_F(TablesTest, LockOfAnotherProgramBansNobodyGrantsNothingAndPasses) {
  EXPECT_TRUE(Ban("10.0.0.1"));
  EXPECT_TRUE(admins.Add("op", "10.0.0.1", "home"));
  {
    OtherProgram other(file);
    other.Run("BEGIN EXCLUSIVE");
    testing::internal::CaptureStderr();
    QElapsedTimer timer;
    timer.start();
    // The lock is waited for once.
    for (int i = 0; i < 100; ++i) {
      EXPECT_FALSE(bans.IsBanned("10.0.0.1"));
      EXPECT_FALSE(admins.IsAdmin("op", "home", "10.0.0.1"));
    }
    EXPECT_LT(timer.elapsed(), 5000) << "200 waits are 50 s";
    qint64 longest = 0;
    for (int i = 0; i < 100 && longest < 8; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      timer.start();
      EXPECT_FALSE(bans.IsBanned("10.0.0.1"));
      longest = std::max(longest, timer.elapsed());
    }
    EXPECT_GE(longest, 8) << "a brief lock is waited for";
    auto place = Bans::kBegin;
    EXPECT_FALSE(bans.Portion(place) || bans.Find(1) || admins.All() || networks.All());
    EXPECT_FALSE(bans.Lift(std::vector<std::int64_t>(1000, 1)) || Ban("10.0.0.2"));
    EXPECT_FALSE(admins.Add("a", "b", "c") || admins.Delete({1}));
    EXPECT_FALSE(networks.Add("a", "b", 1, true) || networks.Change("a", "b", 1, true) ||
                 networks.Delete("a"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::StartsWith("database: database is locked\n"));
  }
  EXPECT_TRUE(bans.IsBanned("10.0.0.1"));
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  OtherProgram other(file);
  other.Run("BEGIN EXCLUSIVE");
  QElapsedTimer timer;
  timer.start();
  EXPECT_FALSE(bans.IsBanned("10.0.0.1"));
  EXPECT_GE(timer.elapsed(), 250) << "patience is back a second later";
}

TEST_F(TablesTest, DeletionThatPartlyFailsLeavesNoTransactionOpen) {
  EXPECT_TRUE(Ban("10.0.0.1") && Ban("10.0.0.2"));
  EXPECT_TRUE(admins.Add("a", "10.0.0.1", "home") && admins.Add("b", "10.0.0.1", "home"));
  for (const char* event : {"b BEFORE DELETE ON bans", "a BEFORE DELETE ON admins"})
    Run(std::string("CREATE TRIGGER ") + event +
        " WHEN old.id=2 BEGIN SELECT RAISE(ABORT, 'no'); END");
  EXPECT_FALSE(bans.Lift({1, 2}));
  EXPECT_EQ(Run("SELECT id FROM bans"), "2;");
  EXPECT_FALSE(admins.Delete({1, 2}));
  EXPECT_EQ(Run("SELECT id FROM admins"), "2;");
}

TEST(StrangerGuardTest, InterruptsNothingAfterItsEnd) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(":memory:", &database), SQLITE_OK);
  // Its memory stays valid: a handler that SQLite kept would report that the time is over.
  std::optional<StrangerGuard> guard(std::in_place, database, "admins", "o'p",
                                     std::chrono::nanoseconds(0));
  guard.reset();
  EXPECT_EQ(sqlite3_exec(database,
                         "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE "
                         "i<1000) SELECT count(*) FROM n",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(database);
}

TEST_F(DatabaseTest, BackupWaitsForTheLockOfAnotherProgram) {
  Run("INSERT INTO admins(name) VALUES('a')");
  ASSERT_TRUE(connection.Connect(file));
  const std::ofstream copy(Path("copy").toStdString());
  DatabaseBackup backup(connection, Path("copy"));
  {
    OtherProgram other(file);
    other.Run("BEGIN EXCLUSIVE");
    for (int i = 0; i < 5; ++i)
      EXPECT_EQ(backup.Step(), DatabaseBackup::Progress::More);
  }
  while (backup.Step() == DatabaseBackup::Progress::More) {
  }
  EXPECT_EQ(OtherProgram(Path("copy")).Run("SELECT name FROM admins"), "a;");
}

TEST_F(TablesTest, WaitForALockTakesNoTimeFromAStrangersQuestion) {
  Run("DROP INDEX admins_by_grant;"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<500)"
      "INSERT INTO admins(name) SELECT i FROM n");
  EXPECT_TRUE(admins.Add("op", "10.0.0.1", "home"));
  OtherProgram other(file);
  other.Run("BEGIN EXCLUSIVE");
  const std::jthread release([&other] {
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    other.Run("COMMIT");
  });
  EXPECT_TRUE(admins.IsAdmin("op", "home", "10.0.0.1"));
}

TEST_F(DatabaseTest, LockIsWaitedForLongerWhileConnecting) {
  OtherProgram other(file);
  other.Run("BEGIN EXCLUSIVE");
  std::jthread release([&other] {
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    other.Run("COMMIT");
  });
  EXPECT_TRUE(connection.Connect(file));
}

}  // namespace
}  // namespace corvane
