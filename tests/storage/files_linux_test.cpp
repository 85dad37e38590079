#include <csignal>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/storage/app_settings_fixture.h"
#include "tests/storage/database_fixture.h"
#include "tests/support/unprivileged_user.h"

namespace corvane {
namespace {

TEST_F(AppSettingsTest, SaveThatFailsLeavesTheOldFile) {
  settings.Load();
  // Nothing can be made or renamed in the folder, but the file itself might be overwritten.
  std::filesystem::permissions(file.toStdString(), std::filesystem::perms(0666));
  std::filesystem::permissions(folder.path().toStdString(), std::filesystem::perms(0555));
  {
    const UnprivilegedUser user;
    settings.SetValue("MaxConns", "7");
  }
  EXPECT_EQ(Content(), kFirstFile);
  EXPECT_EQ(settings.GetValue("MaxConns", ""), "7");
  std::filesystem::permissions(folder.path().toStdString(), std::filesystem::perms(0700));
}

TEST_F(DatabaseTest, ReadOnlyFileIsReadButNotChanged) {
  Run("INSERT INTO admins(name) VALUES('a')");
  std::filesystem::permissions(file.toStdString(), std::filesystem::perms(0444));
  std::filesystem::permissions(folder.path().toStdString(), std::filesystem::perms(0755));
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
  EXPECT_TRUE(rows && rows->RecordCount() == 1 && rows->Text("name") == "committed");
}

}  // namespace
}  // namespace corvane
