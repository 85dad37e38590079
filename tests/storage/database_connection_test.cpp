#include "storage/database_connection.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <QDir>
#include <QFile>

#include "tests/storage/database_fixture.h"
#include "tests/support/unprivileged_user.h"

namespace corvane {
namespace {

using namespace std::string_literals;

TEST_F(DatabaseTest, OnlyAnExistingDatabaseConnects) {
  QFile corrupt(Path("corrupt"));
  ASSERT_TRUE(corrupt.open(QIODevice::WriteOnly));
  corrupt.write(QByteArray(8192, 'x'));
  corrupt.close();
  QDir(folder.path()).mkdir(QStringLiteral("directory"));

  for (const QString& name : {Path("missing"), Path("corrupt"), Path("directory"),
                              QStringLiteral(":memory:"), QString()}) {
    EXPECT_FALSE(connection.Connect(name)) << name.toStdString();
    EXPECT_FALSE(connection.IsConnected()) << name.toStdString();
    EXPECT_TRUE(connection.Error()) << name.toStdString();
    EXPECT_FALSE(connection.ErrorMessage().empty()) << name.toStdString();
  }
  EXPECT_FALSE(QFile::exists(Path("missing")));
  EXPECT_TRUE(connection.Connect(file)) << connection.ErrorMessage();
  EXPECT_FALSE(connection.Error());
  EXPECT_FALSE(connection.Connect(Path("missing")));
  EXPECT_FALSE(connection.SQLSelect("SELECT * FROM bans"));
  EXPECT_FALSE(connection.SQLSelectForEdit("SELECT * FROM bans"));
}

TEST_F(DatabaseTest, WriteAheadLogIsTurnedOff) {
  EXPECT_EQ(Run("PRAGMA journal_mode=WAL"), "wal;");
  ASSERT_TRUE(connection.Connect(file));
  EXPECT_EQ(Run("PRAGMA journal_mode"), "delete;");
}

TEST_F(DatabaseTest, ValuesComeBackAsTheyWereInserted) {
  ASSERT_TRUE(connection.Connect(file));
  const QDateTime date(QDate(2024, 3, 9), QTime(17, 5, 7));
  DatabaseRecord record;
  record.SetText("name", "it's a \"name\"\0 with\xFF all"s);
  record.SetText("pass", "first");
  record.SetText("PASS", "");
  record.SetInteger("users", INT64_MIN);
  record.SetBoolean("enabled", true);
  connection.InsertRecord("networks", record);
  connection.InsertRecord("networks", {});
  DatabaseRecord ban;
  ban.SetDate("bandate", date);
  connection.InsertRecord("bans", ban);
  ASSERT_FALSE(connection.Error()) << connection.ErrorMessage();

  auto rows = connection.SQLSelect("SELECT *,1.5 AS real FROM networks");
  ASSERT_TRUE(rows);
  ASSERT_EQ(rows->RecordCount(), 2U);
  EXPECT_EQ(rows->Text("NAME"), "it's a \"name\"\0 with\xFF all"s);
  EXPECT_EQ(rows->Value("pass"), DatabaseValue(""s));
  EXPECT_EQ(rows->Integer("users"), INT64_MIN);
  EXPECT_TRUE(rows->Boolean("enabled"));
  EXPECT_EQ(rows->Value("real"), DatabaseValue(1.5));
  EXPECT_EQ(rows->Value("missing"), DatabaseValue());
  rows->MoveNext();
  EXPECT_EQ(rows->Value("name"), DatabaseValue());
  rows->MoveNext();
  EXPECT_TRUE(rows->EndOfRows());
  rows->MoveNext();
  EXPECT_EQ(rows->Text("name"), "");
  EXPECT_EQ(connection.SQLSelect("SELECT * FROM bans")->Date("bandate"), date);
}

TEST_F(DatabaseTest, TextThatIsNoStatementFailsWithAMessage) {
  ASSERT_TRUE(connection.Connect(file));
  for (const std::string& text :
       {"SELECT * FROM nowhere"s, "SELECT * FROM bans WHERE address='it's'"s, "'"s, ""s, "-- "s,
        "SELECT * FROM bans\0"s, "SELECT * FROM bans WHERE address='a\0b'"s,
        std::string(2000000, ' '), "SELECT abs(-9223372036854775808)"s}) {
    EXPECT_FALSE(connection.SQLSelect(text)) << text.substr(0, 80);
    EXPECT_TRUE(connection.Error());
    EXPECT_FALSE(connection.ErrorMessage().empty());
    EXPECT_FALSE(connection.SQLSelectForEdit(text));
    connection.SQLExecute("SELECT 1");
    EXPECT_FALSE(connection.Error());
    connection.SQLExecute(text);
    EXPECT_TRUE(connection.Error());
  }
}

TEST_F(DatabaseTest, OnlyTheFirstStatementOfATextRuns) {
  ASSERT_TRUE(connection.Connect(file));
  connection.SQLExecute(
      "INSERT INTO admins(name) VALUES('a'); INSERT INTO admins(name) VALUES('b')");
  EXPECT_FALSE(connection.Error());
  EXPECT_EQ(Run("SELECT name FROM admins"), "a;");
}

TEST_F(DatabaseTest, EachOfSeveralEqualRowsCanBeChanged) {
  Run("INSERT INTO networks VALUES('n','p',5,1),('n','p',5,1),('n','p',5,1),('m','p',5,1)");
  ASSERT_TRUE(connection.Connect(file));
  auto rows = connection.SQLSelectForEdit("SELECT * FROM networks WHERE name='n'");
  ASSERT_TRUE(rows);
  rows->SetText("pass", "of another row");
  rows->MoveNext();
  rows->Edit();
  rows->SetInteger("users", 7);
  rows->SetBoolean("enabled", false);
  rows->Update();
  EXPECT_FALSE(connection.Error()) << connection.ErrorMessage();
  rows->MoveNext();
  rows->DeleteRecord();
  EXPECT_FALSE(connection.Error()) << connection.ErrorMessage();
  EXPECT_EQ(Run("SELECT * FROM networks"), "n|p|5|1;n|p|7|0;m|p|5|1;");

  rows->Edit();
  rows->SetInteger("users", 9);
  rows->Update();  // the row is gone: nothing to change, and no failure
  EXPECT_FALSE(connection.Error());
  rows->Edit();
  rows->SetInteger("no \"such\" column", 9);
  rows->Update();
  EXPECT_TRUE(connection.Error());
  rows->MoveNext();
  rows->DeleteRecord();
  EXPECT_TRUE(connection.Error());
  EXPECT_EQ(Run("SELECT * FROM networks"), "n|p|5|1;n|p|7|0;m|p|5|1;");
}

TEST_F(DatabaseTest, RowsThatHaveNoIdentityAreReadButNotChanged) {
  Run("INSERT INTO networks VALUES('n','p',5,1); CREATE VIEW seen AS SELECT * FROM networks;"
      "CREATE TABLE keyed(name TEXT PRIMARY KEY) WITHOUT ROWID; INSERT INTO keyed VALUES('k')");
  ASSERT_TRUE(connection.Connect(file));
  for (const char* query :
       {"SELECT * FROM seen", "SELECT * FROM keyed", "SELECT name FROM networks",
        "SELECT * FROM networks WHERE name='n' UNION ALL SELECT * FROM networks WHERE name='n'",
        // The star is one column further on with an identity in front of it.
        "SELECT * FROM networks WHERE name='n' UNION SELECT 4,3,2,1 ORDER BY 1"}) {
    auto rows = connection.SQLSelectForEdit(query);
    ASSERT_TRUE(rows) << query;
    EXPECT_FALSE(connection.Error()) << query;
    EXPECT_GE(rows->RecordCount(), 1U) << query;
    rows->DeleteRecord();
    EXPECT_TRUE(connection.Error()) << query;
    rows->SetText("name", "x");
    rows->Update();
    EXPECT_TRUE(connection.Error()) << query;
  }
  EXPECT_EQ(Run("SELECT * FROM networks"), "n|p|5|1;");
}

TEST_F(DatabaseTest, GroupIsCommittedAsAWhole) {
  ASSERT_TRUE(connection.Connect(file));
  connection.Begin();
  connection.SQLExecute("INSERT INTO admins(name) VALUES('a')");
  EXPECT_TRUE(connection.SQLSelectForEdit("SELECT * FROM admins"));
  connection.SQLExecute("INSERT INTO admins(name) VALUES('b')");
  EXPECT_EQ(Run("SELECT name FROM admins"), "");
  connection.Commit();
  EXPECT_EQ(Run("SELECT name FROM admins"), "a;b;");

  connection.SQLExecute("nonsense");
  connection.Commit();
  EXPECT_TRUE(connection.Error());
}

TEST_F(DatabaseTest, GroupThatCannotBeCommittedLeavesNothingOpen) {
  ASSERT_TRUE(connection.Connect(file));
  connection.Begin();
  connection.SQLExecute("INSERT INTO admins(name) VALUES('a')");
  {
    OtherProgram reader(file);
    reader.Run("BEGIN; SELECT * FROM admins");
    connection.Commit();
  }
  EXPECT_TRUE(connection.Error());
  connection.SQLExecute("INSERT INTO admins(name) VALUES('b')");
  EXPECT_FALSE(connection.Error());
  EXPECT_EQ(Run("SELECT name FROM admins"), "b;");
}

TEST_F(DatabaseTest, LockOfAnotherProgramFailsAndPasses) {
  ASSERT_TRUE(connection.Connect(file));
  {
    OtherProgram other(file);
    other.Run("BEGIN EXCLUSIVE");
    EXPECT_FALSE(connection.SQLSelect("SELECT * FROM bans"));
    EXPECT_EQ(connection.ErrorMessage(), "database is locked");
    connection.InsertRecord("bans", {});
    EXPECT_TRUE(connection.Error());
    DatabaseConnection late;
    EXPECT_FALSE(late.Connect(file));
  }
  connection.InsertRecord("bans", {});
  EXPECT_FALSE(connection.Error());
  EXPECT_EQ(Run("SELECT count(*) FROM bans"), "1;");
}

TEST_F(DatabaseTest, ReadOnlyFileIsReadButNotChanged) {
  Run("INSERT INTO admins(name) VALUES('a')");
  ASSERT_TRUE(QFile::setPermissions(file, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
  ASSERT_TRUE(QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::WriteOwner |
                                                       QFile::ExeOwner | QFile::ExeGroup |
                                                       QFile::ExeOther));
  const UnprivilegedUser user;
  ASSERT_TRUE(connection.Connect(file)) << connection.ErrorMessage();
  const auto rows = connection.SQLSelect("SELECT * FROM admins");
  EXPECT_TRUE(rows && rows->Text("name") == "a");
  connection.InsertRecord("admins", {});
  EXPECT_EQ(connection.ErrorMessage(), "attempt to write a readonly database");
}

TEST_F(DatabaseTest, CommittedRowsOutliveAKilledProcess) {
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    DatabaseConnection killed;
    killed.Connect(file);
    killed.SQLExecute("INSERT INTO admins(name) VALUES('committed')");
    killed.Begin();
    killed.SQLExecute("INSERT INTO admins(name) VALUES('not yet')");
    std::raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  ASSERT_TRUE(connection.Connect(file));
  const auto rows = connection.SQLSelect("SELECT * FROM admins");
  ASSERT_TRUE(rows);
  EXPECT_EQ(rows->RecordCount(), 1U);
  EXPECT_EQ(rows->Text("name"), "committed");
}

}  // namespace
}  // namespace corvane
