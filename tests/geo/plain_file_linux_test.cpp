#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "geo/plain_file.h"

namespace corvane {
namespace {

TEST(PlainFile, NothingElseOfItsNameIsRead) {
  const QTemporaryDir folder;
  const QString file = folder.filePath(QStringLiteral("file"));
  const std::string path = file.toStdString();
  std::ofstream(path) << "12345";
  EXPECT_EQ(ReadPlainFile(file, 5), QByteArray("12345"));
  EXPECT_FALSE(ReadPlainFile(file, 4));
  std::filesystem::create_symlink(path, path + "-link");
  EXPECT_FALSE(ReadPlainFile(file + QStringLiteral("-link"), 5));
  ASSERT_EQ(mkfifo((path + "-pipe").c_str(), 0600), 0);
  EXPECT_FALSE(ReadPlainFile(file + QStringLiteral("-pipe"), 5));
  EXPECT_FALSE(ReadPlainFile(folder.path(), 5));
  // Only root can give a file to another user.
  if (chown(path.c_str(), 1, 1) == 0) {
    EXPECT_FALSE(ReadPlainFile(file, 5));
  }
}

}  // namespace
}  // namespace corvane
