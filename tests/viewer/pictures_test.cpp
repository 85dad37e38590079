#include <atomic>

#include <QColor>
#include <QDir>
#include <QPainter>

#include "tests/viewer/map_fixture.h"
#include "viewer/picture_cutter.h"
#include "viewer/picture_dialog.h"
#include "viewer/tile_pyramid.h"

namespace corvane::viewer {
namespace {

const QColor kLeft(200, 30, 40);
const QColor kRight(20, 90, 180);

// Left and right half of a colour each; neither side a multiple of a tile's.
QImage TwoHalves(QSize size) {
  QImage image(size, QImage::Format_RGB32);
  image.fill(kLeft);
  QPainter(&image).fillRect(size.width() / 2, 0, size.width(), size.height(), kRight);
  return image;
}

TEST(PictureCutter, CutsEveryFormatIntoAWholePyramid) {
  const QTemporaryDir folder;
  const std::atomic<bool> stops = false;
  QImage paletted = TwoHalves({700, 300}).convertToFormat(QImage::Format_Indexed8);
  const QImage grey = TwoHalves({700, 300}).convertToFormat(QImage::Format_Grayscale16);
  const std::pair<const char*, QImage> pictures[] = {{"rgb.png", TwoHalves({700, 300})},
                                                     {"palette.png", paletted},
                                                     {"grey.png", grey},
                                                     {"photo.jpg", TwoHalves({700, 300})},
                                                     {"plain.bmp", TwoHalves({700, 300})}};
  for (const auto& [name, image] : pictures) {
    const QString file = folder.filePath(name);
    ASSERT_TRUE(image.save(file));
    const QString tiles = TileFolderOf(file, folder.filePath("cache"));
    int last = -1;
    EXPECT_EQ(CutPicture(file, tiles, stops, [&](int percent) { last = percent; }), "") << name;
    EXPECT_EQ(last, 100);
    const auto pyramid = TilePyramid::Open(tiles);
    ASSERT_TRUE(pyramid) << name;
    EXPECT_EQ(pyramid->FinestLevel(), 2);
    EXPECT_EQ(pyramid->Bounds(), QRectF(0, 0, 768, 512));
    // The colours are where they were, at the finest and at the coarsest level.
    const auto isLike = [](QRgb one, QRgb other) {
      return std::abs(qRed(one) - qRed(other)) + std::abs(qGreen(one) - qGreen(other)) +
                 std::abs(qBlue(one) - qBlue(other)) <
             12;
    };
    const QImage first(pyramid->FileOf({2, 0, 0}));
    const QImage last2(pyramid->FileOf({2, 2, 1}));
    const QImage whole(pyramid->FileOf({0, 0, 0}));
    EXPECT_TRUE(isLike(first.pixel(5, 5), image.pixel(5, 5))) << name;
    EXPECT_TRUE(isLike(last2.pixel(180, 40), image.pixel(692, 296))) << name;
    EXPECT_EQ(qAlpha(last2.pixel(200, 40)), 0) << name;
    EXPECT_TRUE(isLike(whole.pixel(60, 60), image.pixel(240, 240))) << name;
    EXPECT_TRUE(isLike(whole.pixel(120, 30), image.pixel(480, 120))) << name;
  }
}

TEST(PictureCutter, LeavesNothingBehindWhereItFails) {
  const QTemporaryDir folder;
  const QString cache = folder.filePath("cache");
  std::atomic<bool> stops = false;
  const QString good = folder.filePath("good.png");
  ASSERT_TRUE(TwoHalves({2000, 2000}).save(good));
  QFile file(good);
  ASSERT_TRUE(file.open(QFile::ReadOnly));
  const QByteArray bytes = file.readAll();
  for (const int length : {0, 20, 100, static_cast<int>(bytes.size()) / 2}) {
    const QString cut = folder.filePath("cut.png");
    QFile out(cut);
    ASSERT_TRUE(out.open(QFile::WriteOnly));
    out.write(bytes.left(length));
    out.close();
    EXPECT_NE(CutPicture(cut, cache + "/x", stops, [](int) {}), "") << length;
  }
  EXPECT_NE(CutPicture(good, cache + "/x", stops, [&](int percent) { stops = percent > 20; }), "");
  EXPECT_TRUE(QDir(cache).isEmpty());
}

TEST(TilePyramid, FindsTheTilesOfAPartAndRefusesWhatIsNone) {
  const QTemporaryDir folder;
  EXPECT_FALSE(TilePyramid::Open(folder.path()));
  EXPECT_FALSE(TilePyramid::Open(folder.filePath("nowhere")));
  QDir(folder.path()).mkpath("3/4");
  EXPECT_FALSE(TilePyramid::Open(folder.path()));
  QImage tile(128, 128, QImage::Format_RGB32);
  tile.fill(Qt::red);
  ASSERT_TRUE(tile.save(folder.filePath("3/4/5.jpg")));
  ASSERT_TRUE(tile.save(folder.filePath("3/4/6.jpg")));
  QDir(folder.path()).mkpath("99999999999/4");
  const auto pyramid = TilePyramid::Open(folder.path());
  ASSERT_TRUE(pyramid);
  EXPECT_EQ(pyramid->Bounds(), QRectF(512, 640, 128, 256));
  EXPECT_EQ(pyramid->TilesAt(3, {0, 0, 600, 700}), (std::vector<TileId>{{3, 4, 5}}));
  EXPECT_EQ(pyramid->TilesAt(3, {0, 0, 600, 769}), (std::vector<TileId>{{3, 4, 5}, {3, 4, 6}}));
  EXPECT_TRUE(pyramid->TilesAt(3, {0, 0, 512, 640}).empty());
}

class PicturesTest : public WindowTest {
 protected:
  QRgb ColourAt(QPointF place) { return Painted().pixel(OnMap(place)); }
};

TEST_F(PicturesTest, AreCutShownWhereTheyBelongAndKept) {
  const QString file = myFolder.filePath("map.png");
  ASSERT_TRUE(TwoHalves({700, 300}).save(file));
  myWindow->actions->actPicture->trigger();
  auto* dialog = Opened<PictureDialog>("PictureDialog");
  EXPECT_FALSE(dialog->txtPath->isEnabled());
  // Its middle is beside its text.
  QTest::mouseClick(dialog->rdoImage, Qt::LeftButton, {},
                    QPoint(8, dialog->rdoImage->height() / 2));
  EXPECT_FALSE(dialog->btnOK->isEnabled());
  Type(dialog->txtPath, file);
  dialog->spnLeft->setValue(-100);
  dialog->spnTop->setValue(50);
  dialog->spnScale->setValue(4);
  Click(dialog->btnOK);
  // 700 x 300 pixels of four units each, from -100, 50 on.
  const auto isShown = [&] {
    return PumpUntil([&] {
      return ColourAt({-90, 60}) == kLeft.rgb() && ColourAt({2690, 1240}) == kRight.rgb() &&
             ColourAt({1290, 600}) == kLeft.rgb() && ColourAt({1310, 600}) == kRight.rgb();
    });
  };
  EXPECT_TRUE(isShown());
  EXPECT_FALSE(myWindow->stsLine->prgCutting->isVisible());

  myWindow->close();
  MakeWindow();
  EXPECT_TRUE(isShown()) << "from the cache";
  myWindow->SetPicture(0, {});
  EXPECT_NE(ColourAt({-90, 60}), kLeft.rgb());
}

TEST_F(PicturesTest, WhatIsNoneIsSaid) {
  const QString file = myFolder.filePath("map.png");
  QFile out(file);
  ASSERT_TRUE(out.open(QFile::WriteOnly));
  out.write("no picture");
  out.close();
  MapPicture picture;
  picture.kind = MapPicture::Kind::Image;
  picture.path = file;
  myWindow->SetPicture(0, picture);
  EXPECT_TRUE(Says("cannot be shown"));
  picture.kind = MapPicture::Kind::Tiles;
  picture.path = myFolder.path();
  myWindow->SetPicture(0, picture);
  EXPECT_TRUE(Says("There are no tiles in"));
}

}  // namespace
}  // namespace corvane::viewer
