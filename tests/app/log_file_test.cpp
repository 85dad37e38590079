#include <QDir>
#include <QFileInfo>

#include "tests/app/log_file_fixture.h"

namespace corvane {
namespace {

TEST_F(LogFileTest, RotatesAtItsLimitAndKeepsFiveOlderFiles) {
  constexpr qint64 kMaxBytes = qint64{10} << 20;
  LogFile log(path);
  log.WriteLine("one");
  EXPECT_TRUE(EndsIn("one\n"));
  for (int line = 0; line < 7 * 110; ++line) {
    log.WriteLine(std::to_string(line) + std::string(100'000, '.'));
    // Writes now, before the buffer is full.
    if (line % 8 == 0) log.Last(0);
  }
  const std::vector<std::string> last = log.Last(3);
  ASSERT_EQ(last.size(), 3U);
  EXPECT_EQ(last[2].substr(0, 4), "769.");
  const QFileInfoList files = QDir(folder.filePath("logs")).entryInfoList(QDir::Files, QDir::Name);
  ASSERT_EQ(files.size(), 6);
  for (const QFileInfo& file : files) {
    EXPECT_LE(file.size(), kMaxBytes);
  }
  EXPECT_EQ(files.last().fileName(), "test.log.5");
}

}  // namespace
}  // namespace corvane
