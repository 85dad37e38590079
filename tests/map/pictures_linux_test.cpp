#include <atomic>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "map/pictures/picture_cutter.h"
#include "map/pictures/tile_store.h"
#include "tests/support/test_client.h"

namespace corvane::map {
namespace {

TEST(Pictures, PipesDoNotBlock) {
  const QTemporaryDir folder;
  QDir(folder.path()).mkpath("0/0");
  QImage tile(256, 256, QImage::Format_RGB32);
  tile.fill(Qt::red);
  ASSERT_TRUE(tile.save(folder.filePath("0/0/0.png")));
  const QString pipe = folder.filePath("0/0/1.png");
  ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
  const std::atomic<bool> stops = false;
  EXPECT_NE(CutPicture(pipe, folder.filePath("cut"), stops, [](int) {}), "");
  TileStore store(*TilePyramid::Open(folder.path()));
  EXPECT_TRUE(PumpUntil([&] { return store.Find({0, 0, 1}) != nullptr; }));
}

}  // namespace
}  // namespace corvane::map
