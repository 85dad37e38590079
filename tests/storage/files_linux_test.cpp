#include <csignal>
#include <filesystem>
#include <sys/resource.h>
#include <sys/wait.h>

#include "tests/storage/app_settings_fixture.h"
#include "tests/storage/database_fixture.h"
#include "tests/support/unprivileged_user.h"

namespace corvane {
namespace {

// While it exists, files cannot grow beyond a number of bytes, as if the disk were full.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : myHandler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &myLimit);
    const rlimit limit{bytes, myLimit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &myLimit);
    std::signal(SIGXFSZ, myHandler);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  void (*myHandler)(int);
  rlimit myLimit{};
};

TEST_F(AppSettingsTest, FileIsWrittenInPlaceIfTheFolderAllowsNoNewOne) {
  settings.Load();
  std::filesystem::permissions(file.toStdString(), std::filesystem::perms(0666));
  std::filesystem::permissions(folder.path().toStdString(), std::filesystem::perms(0555));
  {
    const UnprivilegedUser user;
    settings.SetValue("MaxConns", "7");
    EXPECT_EQ(Stored("MaxConns"), "7");
    const QByteArray before = Content();
    {
      const FileSizeLimit limit(static_cast<rlim_t>(before.size()));
      EXPECT_FALSE(settings.SetValue("MaxConns", "too long for what is free"));
      EXPECT_EQ(settings.SaveError(), "File too large");
      EXPECT_EQ(settings.GetValue("MaxConns", ""), "7");
    }
    EXPECT_EQ(Content(), before) << "what does not fit changes nothing";
    EXPECT_TRUE(settings.SetValue("MaxConns", ""));
    EXPECT_EQ(Stored("MaxConns"), "");
  }
  std::filesystem::permissions(folder.path().toStdString(), std::filesystem::perms(0700));
  Write("<cut off");
  settings.Load();
  for (const QByteArray& before : {QByteArray("<cut off"), kFirstFile}) {
    Write(before);
    const FileSizeLimit limit(8);
    EXPECT_FALSE(settings.SetValue("MaxConns", "too long for what is free"));
    EXPECT_EQ(settings.SaveError(), "File too large");
    EXPECT_EQ(Content(), before);
    EXPECT_FALSE(QFile::exists(file + ".broken"));
  }
}

TEST_F(DatabaseTest, ReadOnlyFileIsReadButNotChanged) {
  Run("INSERT INTO admins(name) VALUES('a')");
  std::filesystem::permissions(file.toStdString(), std::filesystem::perms(0444));
  std::filesystem::permissions(folder.path().toStdString(), std::filesystem::perms(0755));
  const UnprivilegedUser user;
  ASSERT_TRUE(connection.Connect(file)) << connection.ErrorMessage();
  const auto rows = connection.SQLSelect("SELECT * FROM admins");
  EXPECT_TRUE(rows && rows->Text("name") == "a");
  EXPECT_FALSE(connection.InsertRecord("admins", {}));
  EXPECT_EQ(connection.ErrorMessage(), "attempt to write a readonly database");
}

TEST_F(DatabaseTest, CommittedRowsOutliveAKilledProcess) {
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    DatabaseConnection killed;
    EXPECT_TRUE(killed.Connect(file));
    EXPECT_TRUE(killed.SQLExecute("INSERT INTO admins(name) VALUES('committed')"));
    EXPECT_TRUE(killed.Begin());
    EXPECT_TRUE(killed.SQLExecute("INSERT INTO admins(name) VALUES('not yet')"));
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
