#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "map/recording/recording_folder.h"
#include "map/settings.h"

namespace corvane::map {
namespace {

TEST(Settings, AreMadeReadableByTheirUserOnly) {
  const QTemporaryDir folder;
  const QString path = folder.filePath("map.ini");
  ASSERT_TRUE(
      QFile(path).open(QFile::WriteOnly, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
  RecentServer server;
  server.digest = "0123456789abcdef";
  Settings(path).Remember(server);
  EXPECT_GT(QFile(path).size(), server.digest.size());
  EXPECT_EQ(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther), 0);
}

TEST(RecordingFolder, MakesFilesReadableByTheirUserOnly) {
  const QTemporaryDir folder;
  ASSERT_EQ(RecordingFolder(folder.path()).Append({}, "block", {}), "");
  const QFileInfoList files = QDir(folder.path()).entryInfoList(QDir::Files);
  ASSERT_EQ(files.size(), 1);
  EXPECT_EQ(files[0].permissions() & (QFile::ReadGroup | QFile::ReadOther), 0);
}

}  // namespace
}  // namespace corvane::map
