#include <QDir>

#include "tests/app/log_file_fixture.h"

namespace corvane {
namespace {

TEST_F(LogFileTest, MissingOrBlockedFileCostsLinesOnly) {
  LogFile log(path);
  log.WriteLine("before");
  EXPECT_TRUE(EndsIn("before\n"));
  EXPECT_EQ(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther), 0);
  ASSERT_TRUE(QDir(folder.filePath("logs")).removeRecursively());
  // A folder in place of the file.
  ASSERT_TRUE(QDir().mkpath(path));
  log.Reopen();
  for (int line = 0; line < 2000; ++line)
    log.WriteLine(std::string(1000, '.'));
  EXPECT_TRUE(log.Last(1).empty());
  ASSERT_TRUE(QDir().rmdir(path));
  PumpFor(std::chrono::milliseconds(1500));
  log.WriteLine("after");
  EXPECT_TRUE(EndsIn(" lines dropped)\nafter\n"));
}

TEST_F(LogFileTest, ReopenContinuesInTheNewFile) {
  LogFile log(path);
  log.WriteLine("one");
  EXPECT_TRUE(EndsIn("one\n"));
  ASSERT_TRUE(QFile::rename(path, path + ".old"));
  log.WriteLine("two");  // makes a new file
  EXPECT_TRUE(EndsIn("two\n"));
  ASSERT_TRUE(QFile::rename(path, path + ".older"));
  ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
  log.Reopen();
  log.WriteLine("three");
  EXPECT_TRUE(EndsIn("three\n"));
}

}  // namespace
}  // namespace corvane
