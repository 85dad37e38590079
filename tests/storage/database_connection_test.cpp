#include "storage/database_connection.h"

#include <fstream>

#include <QFile>

#include "tests/storage/database_fixture.h"

namespace corvane {
namespace {

TEST_F(DatabaseTest, OnlyAnExistingDatabaseConnects) {
  std::ofstream(Path("corrupt").toStdString()) << std::string(8192, 'x');
  for (const QString& name : {Path("missing"), Path("corrupt"), folder.path(), QString()}) {
    EXPECT_FALSE(connection.Connect(name)) << name.toStdString();
    EXPECT_FALSE(connection.IsConnected()) << name.toStdString();
    EXPECT_NE(connection.ErrorMessage(), "") << name.toStdString();
    EXPECT_FALSE(connection.SQLSelect("SELECT * FROM bans"));
  }
  EXPECT_FALSE(QFile::exists(Path("missing")));
  EXPECT_TRUE(connection.Connect(file)) << connection.ErrorMessage();
  EXPECT_FALSE(connection.Error());
  // Covers the journal's removal: a journal that reappears would undo the change.
  const auto durability = connection.SQLSelect("PRAGMA synchronous");
  EXPECT_TRUE(durability && durability->Integer("synchronous") == 3) << "EXTRA";
}

TEST_F(DatabaseTest, EachOfSeveralEqualRowsCanBeChanged) {
  Run("INSERT INTO networks VALUES('n','p',5,1),('n','p',5,1),('n','p',5,1),('m','p',5,1)");
  ASSERT_TRUE(connection.Connect(file));
  auto rows = connection.SQLSelectForEdit("SELECT * FROM networks WHERE name='n'");
  ASSERT_TRUE(rows);
  rows->MoveNext();
  DatabaseRecord changes;
  changes.SetInteger("users", 7);
  changes.SetBoolean("enabled", false);
  EXPECT_TRUE(rows->Update(changes)) << connection.ErrorMessage();
  rows->MoveNext();
  EXPECT_TRUE(rows->DeleteRecord()) << connection.ErrorMessage();

  EXPECT_TRUE(rows->Update(changes)) << "the row is gone: nothing to change, and no failure";
  EXPECT_EQ(Run("SELECT * FROM networks"), "n|p|5|1;n|p|7|0;m|p|5|1;");
}

TEST_F(DatabaseTest, RowsThatHaveNoIdentityAreReadButNotChanged) {
  Run("INSERT INTO networks VALUES('n','p',5,1); CREATE VIEW seen AS SELECT * FROM networks");
  ASSERT_TRUE(connection.Connect(file));
  for (const char* query :
       {"SELECT * FROM seen", "SELECT name FROM networks",
        "SELECT * FROM networks WHERE name='n' UNION ALL SELECT * FROM networks WHERE name='n'",
        // With the identity in front, the star begins one column later.
        "SELECT * FROM networks WHERE name='n' UNION SELECT 4,3,2,1 ORDER BY 1"}) {
    auto rows = connection.SQLSelectForEdit(query);
    ASSERT_TRUE(rows) << query;
    EXPECT_GE(rows->RecordCount(), 1U) << query;
    EXPECT_FALSE(rows->DeleteRecord()) << query;
  }
  EXPECT_EQ(Run("SELECT * FROM networks"), "n|p|5|1;");
}

TEST_F(DatabaseTest, TransactionIsCommittedAsAWholeOrNotAtAll) {
  ASSERT_TRUE(connection.Connect(file));
  EXPECT_TRUE(connection.Begin());
  EXPECT_TRUE(connection.SQLExecute("INSERT INTO admins(name) VALUES('a')"));
  {
    OtherProgram reader(file);
    EXPECT_EQ(reader.Run("BEGIN; SELECT name FROM admins"), "");
    EXPECT_FALSE(connection.Commit());
  }
  EXPECT_TRUE(connection.Begin());
  EXPECT_TRUE(connection.SQLExecute("INSERT INTO admins(name) VALUES('b')"));
  EXPECT_TRUE(connection.SQLExecute("INSERT INTO admins(name) VALUES('c')"));
  EXPECT_TRUE(connection.Commit());
  EXPECT_EQ(Run("SELECT name FROM admins"), "b;c;");
}

}  // namespace
}  // namespace corvane
