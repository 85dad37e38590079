#include <atomic>

#include <QColor>
#include <QDir>
#include <QPainter>

#include "map/picture_dialog.h"
#include "map/pictures/picture_cutter.h"
#include "map/pictures/picture_fit.h"
#include "map/pictures/tile_pyramid.h"
#include "map/pictures/tile_store.h"
#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

const QColor kLeft(200, 30, 40);
const QColor kRight(20, 90, 180);

// Two colours, left and right, exchanged in the lower half.
QImage FourQuarters(QSize size) {
  QImage image(size, QImage::Format_RGB32);
  image.fill(kLeft);
  const int x = size.width() / 2;
  const int y = size.height() / 2;
  QPainter painter(&image);
  painter.fillRect(x, 0, x, y, kRight);
  painter.fillRect(0, y, x, size.height() - y, kRight);
  return image;
}

TEST(PictureCutter, CutsEachFormatIntoACompletePyramid) {
  const QTemporaryDir folder;
  const std::atomic<bool> stops = false;
  // A JPEG of that height is read in two strips.
  const QImage picture = FourQuarters({300, 1100});
  const std::pair<const char*, QImage> pictures[] = {
      {"rgb.png", picture},
      {"palette.png", picture.convertToFormat(QImage::Format_Indexed8)},
      {"grey.png", picture.convertToFormat(QImage::Format_Grayscale16)},
      {"photo.jpg", picture},
      {"plain.bmp", picture}};
  for (const auto& [name, image] : pictures) {
    const QString file = folder.filePath(name);
    ASSERT_TRUE(image.save(file));
    const QString tiles = TileFolderOf(file, folder.filePath("cache"));
    int percent = -1;
    EXPECT_EQ(CutPicture(file, tiles, stops, [&](int now) { percent = now; }), "") << name;
    EXPECT_EQ(percent, 100);
    const auto pyramid = TilePyramid::Open(tiles);
    ASSERT_TRUE(pyramid) << name;
    EXPECT_EQ(pyramid->FinestLevel(), 3);
    EXPECT_EQ(pyramid->Bounds(), QRectF(0, 0, 512, 1280));
    // The colours are in place at the finest and the coarsest level.
    const auto isLike = [](QRgb one, QRgb other) {
      return std::abs(qRed(one) - qRed(other)) + std::abs(qGreen(one) - qGreen(other)) +
                 std::abs(qBlue(one) - qBlue(other)) <
             12;
    };
    const QImage first(pyramid->FileOf({3, 0, 0}));
    const QImage third(pyramid->FileOf({3, 0, 2}));
    const QImage last(pyramid->FileOf({3, 1, 4}));
    const QImage whole(pyramid->FileOf({0, 0, 0}));
    EXPECT_TRUE(isLike(first.pixel(5, 5), image.pixel(5, 5))) << name;
    EXPECT_TRUE(isLike(third.pixel(5, 200), image.pixel(5, 712))) << name;
    EXPECT_TRUE(isLike(last.pixel(30, 60), image.pixel(286, 1084))) << name;
    EXPECT_EQ(qAlpha(last.pixel(60, 60)), 0) << name;
    EXPECT_TRUE(isLike(whole.pixel(9, 30), image.pixel(72, 240))) << name;
    EXPECT_TRUE(isLike(whole.pixel(28, 120), image.pixel(224, 960))) << name;
    // A changed file has another folder.
    QFile changed(file);
    ASSERT_TRUE(changed.open(QFile::ReadWrite));
    const QDateTime before = changed.fileTime(QFile::FileModificationTime).addDays(-1);
    ASSERT_TRUE(changed.setFileTime(before, QFile::FileModificationTime));
    EXPECT_NE(TileFolderOf(file, folder.filePath("cache")), tiles);
  }
}

TEST(PictureCutter, LeavesNothingBehindAfterAFailure) {
  const QTemporaryDir folder;
  const QString cache = folder.filePath("cache");
  std::atomic<bool> stops = false;
  const QString good = folder.filePath("good.png");
  ASSERT_TRUE(FourQuarters({2000, 2000}).save(good));
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
  const QString wide = folder.filePath("wide.png");
  ASSERT_TRUE(QImage(131'073, 1, QImage::Format_Mono).save(wide));
  EXPECT_EQ(CutPicture(wide, cache + "/x", stops, [](int) {}), "it is wider than 131072 pixels");
  EXPECT_EQ(CutPicture(cache, cache + "/x", stops, [](int) {}), "it is a folder");
  EXPECT_NE(CutPicture(good, cache + "/x", stops, [&](int percent) { stops = percent > 20; }), "");
  EXPECT_TRUE(QDir(cache).isEmpty());
}

TEST(TilePyramid, FindsTheTilesOfAPartAndRefusesOtherFolders) {
  const QTemporaryDir folder;
  EXPECT_FALSE(TilePyramid::Open(folder.path()));
  EXPECT_FALSE(TilePyramid::Open(folder.filePath("nowhere")));
  QDir(folder.path()).mkpath("3/4");
  EXPECT_FALSE(TilePyramid::Open(folder.path()));
  QImage tile(128, 128, QImage::Format_RGB32);
  tile.fill(Qt::red);
  ASSERT_TRUE(tile.copy(0, 0, 128, 64).save(folder.filePath("3/4/5.jpg")));
  EXPECT_FALSE(TilePyramid::Open(folder.path())) << "tiles are square";
  ASSERT_TRUE(tile.save(folder.filePath("3/4/5.jpg")));
  ASSERT_TRUE(tile.save(folder.filePath("3/4/6.jpg")));
  QDir(folder.path()).mkpath("99999999999/4");
  QDir(folder.path()).mkpath("1");
  const auto pyramid = TilePyramid::Open(folder.path());
  ASSERT_TRUE(pyramid);
  EXPECT_EQ(pyramid->Bounds(), QRectF(512, 640, 128, 256));
  EXPECT_EQ(pyramid->TilesAt(3, {0, 0, 600, 700}), (std::vector<TileId>{{3, 4, 5}}));
  EXPECT_EQ(pyramid->TilesAt(3, {0, 0, 600, 769}), (std::vector<TileId>{{3, 4, 5}, {3, 4, 6}}));
  EXPECT_TRUE(pyramid->TilesAt(3, {0, 0, 512, 640}).empty());
  const std::pair<double, int> levels[] = {{8, 3}, {1, 3}, {0.5, 2}, {0.25, 1}, {0.001, 1}};
  for (const auto& [screenPixels, level] : levels)
    EXPECT_EQ(pyramid->LevelFor(screenPixels), level) << screenPixels;
}

TEST(TileStore, IsBoundedAndLoadsDroppedTilesAgain) {
  const QTemporaryDir folder;
  QDir(folder.path()).mkpath("0/0");
  QImage tile(3000, 3000, QImage::Format_RGB32);
  tile.fill(kLeft);
  constexpr int kTiles = 3;
  static_assert(kTiles * 3000 * 3000 * 4 > TileStore::kMaxKib << 10);
  for (int row = 0; row < kTiles; ++row)
    ASSERT_TRUE(tile.save(folder.filePath(QStringLiteral("0/0/%1.png").arg(row))));
  TileStore store(*TilePyramid::Open(folder.path()));
  const auto comes = [&](int row) {
    return PumpUntil([&] { return store.Find({0, 0, row}) != nullptr; });
  };
  // More tiles than readers.
  for (int row = 0; row < kTiles; ++row)
    EXPECT_EQ(store.Find({0, 0, row}), nullptr);
  store.ForgetRequests();
  for (int row = 0; row < kTiles; ++row)
    ASSERT_TRUE(comes(row));
  int held = 0;
  for (int row = 0; row < kTiles; ++row)
    held += store.Peek({0, 0, row}) != nullptr ? 1 : 0;
  EXPECT_LT(held, kTiles);
  for (int row = 0; row < kTiles; ++row)
    EXPECT_TRUE(comes(row));
}

class PicturesTest : public WindowTest {
 protected:
  QRgb ColourAt(QPointF place) { return Painted().pixel(OnMap(place)); }
};

TEST_F(PicturesTest, AreCutShownInPlaceAndKept) {
  const QString file = myFolder.filePath("map.png");
  ASSERT_TRUE(FourQuarters({700, 300}).save(file));
  for (int i = 0; i < 8; ++i)
    QDir(myFolder.path()).mkpath(QStringLiteral("cache/an older one %1").arg(i));
  myWindow->ShowFacet(7);
  myWindow->actions->actPicture->trigger();
  auto* dialog = Opened<PictureDialog>("PictureDialog");
  EXPECT_FALSE(dialog->txtPath->isEnabled());
  // The middle of the button is beside its text.
  QTest::mouseClick(dialog->rdoImage, Qt::LeftButton, {},
                    QPoint(8, dialog->rdoImage->height() / 2));
  EXPECT_FALSE(dialog->btnOK->isEnabled());
  Type(dialog->txtPath, file);
  dialog->spnLeft->setValue(-9100);
  dialog->spnTop->setValue(50);
  dialog->spnScale->setValue(4);
  Click(dialog->btnOK);
  // 700 x 300 pixels of 4 units each, with the corner at -9100, 50.
  const auto isShown = [&] {
    return PumpUntil([&] {
      return ColourAt({-9070, 80}) == kLeft.rgb() && ColourAt({-6330, 1220}) == kLeft.rgb() &&
             ColourAt({-7710, 600}) == kLeft.rgb() && ColourAt({-7690, 600}) == kRight.rgb();
    });
  };
  EXPECT_TRUE(isShown());
  EXPECT_FALSE(myWindow->stsLine->lblState->text().contains("picture"));

  myWindow->close();
  MakeWindow();
  QTest::keyClick(myWindow->cmbFacet, Qt::Key_Down);
  EXPECT_EQ(myWindow->Facet(), 7);
  EXPECT_TRUE(isShown()) << "from the cache";
  EXPECT_EQ(QDir(myFolder.filePath("cache")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(),
            MapPictures::kMaxCachedImages);
  myWindow->SetPicture(7, {});
  EXPECT_NE(ColourAt({-9070, 80}), kLeft.rgb());
}

TEST(PictureFit, RefusesPlacesThatDoNotFit) {
  const auto fit = [](QPointF pixel, QPointF place) {
    return FitPicture({{200, 100}, {1400, 850}}, {pixel, place}, 1000);
  };
  const PictureFit good = fit({600, 300}, {2210, 1245});
  EXPECT_EQ(good.error, "");
  EXPECT_NEAR(good.unitsPerPixel, 2, 0.03);
  EXPECT_NEAR(good.corner.x(), 1000, 12);
  EXPECT_NEAR(good.corner.y(), 650, 12);
  const std::tuple<QPointF, QPointF, const char*> bad[] = {
      {{240, 120}, {1480, 890}, "too close"},
      {{600, 300}, {2200, 1350}, "2 units wide and 2.5 units high"},
      {{600, 100}, {1400, 1250}, "same direction"},
      {{600, 300}, {600, 450}, "-2 units wide and -2 units high"},
      {{600, 300}, {1400, 850}, "0 units wide"}};
  for (const auto& [pixel, place, why] : bad)
    EXPECT_THAT(fit(pixel, place).error.toStdString(), testing::HasSubstr(why));
}

TEST_F(PicturesTest, ABrokenOneReplacesNoneAndTwoKnownPlacesPlaceAGoodOne) {
  const QString file = myFolder.filePath("map.png");
  const QString broken = myFolder.filePath("broken.png");
  ASSERT_TRUE(FourQuarters({700, 300}).save(file));
  QFile out(broken);
  ASSERT_TRUE(out.open(QFile::WriteOnly));
  out.write("no picture");
  out.close();
  myWindow->SetPicture(0, {MapPicture::Kind::Image, file, {0, 0}, 1});
  ASSERT_TRUE(PumpUntil([&] { return ColourAt({10, 10}) == kLeft.rgb(); }));
  myWindow->actions->actPicture->trigger();
  auto* dialog = Opened<PictureDialog>("PictureDialog");
  Type(dialog->txtPath, broken);
  Click(dialog->btnOK);
  EXPECT_TRUE(PumpUntil([&] { return dialog->lblState->text().contains("cannot be shown"); }));
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_EQ(ColourAt({10, 10}), kLeft.rgb());

  Type(dialog->txtPath, file);
  const auto choose = [&](std::size_t number, QPointF pixel, const QString& x, const QString& y) {
    QTest::mouseClick(dialog->preview->viewport(), Qt::LeftButton, {},
                      dialog->preview->mapFromScene(pixel));
    Type(dialog->spnX.at(number), x);
    Type(dialog->spnY.at(number), y);
  };
  QTest::keyClick(dialog->txtPath, Qt::Key_Tab);
  ASSERT_TRUE(PumpUntil([&] { return dialog->preview->Side() > 0; }));
  choose(0, {100, 50}, "1200", "600");
  choose(1, {600, 250}, "2200", "1300");
  EXPECT_FALSE(dialog->btnOK->isEnabled()) << dialog->lblPlaces->text().toStdString();
  Type(dialog->spnY[1], "1000");
  EXPECT_NEAR(dialog->spnScale->value(), 2, 0.02);
  Click(dialog->btnOK);
  EXPECT_TRUE(PumpUntil([&] {
    return ColourAt({1050, 550}) == kLeft.rgb() && ColourAt({2350, 550}) == kRight.rgb();
  }));
  EXPECT_NE(ColourAt({950, 550}), kLeft.rgb());
}

TEST_F(PicturesTest, APictureBelongsToThePlaceForWhichItWasGiven) {
  const QString file = myFolder.filePath("map.png");
  ASSERT_TRUE(FourQuarters({700, 300}).save(file));
  const auto enter = [&](const char* network) {
    myWindow->LoginTo({"127.0.0.1", 1, network, "Ann", {}});
  };
  const auto hasPicture = [&] { return !myWindow->map->Scene()->PictureBounds().isNull(); };
  enter("North");
  myWindow->SetPicture(0, {MapPicture::Kind::Image, file, {}, 1});
  myWindow->SetPicture(1, {MapPicture::Kind::Tiles, myFolder.path(), {}, 1});
  enter("South");
  ASSERT_TRUE(Shows("There are no tiles in")) << "the first is cut";
  EXPECT_FALSE(hasPicture());
  enter("North");
  EXPECT_TRUE(PumpUntil(hasPicture));
}

TEST_F(PicturesTest, FailuresAreReported) {
  const QString file = myFolder.filePath("map.png");
  QFile out(file);
  ASSERT_TRUE(out.open(QFile::WriteOnly));
  out.write("no picture");
  out.close();
  MapPicture picture;
  picture.kind = MapPicture::Kind::Image;
  picture.path = file;
  for (int attempt = 0; attempt < 2; ++attempt) {
    myWindow->SetPicture(0, picture);
    EXPECT_TRUE(Shows("cannot be shown"));
    myWindow->txtMessages->clear();
  }
  picture.kind = MapPicture::Kind::Tiles;
  picture.path = myFolder.path();
  myWindow->SetPicture(0, picture);
  EXPECT_TRUE(Shows("There are no tiles in"));
}

}  // namespace
}  // namespace corvane::map
