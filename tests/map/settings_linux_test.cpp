#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace corvane::map
