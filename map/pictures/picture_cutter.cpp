#include "map/pictures/picture_cutter.h"

#include <algorithm>
#include <memory>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QTemporaryDir>

#include "map/pictures/picture_rows.h"

namespace corvane::map {
namespace {

constexpr int kTileSide = 256;
// In pixels. A row of tiles takes 128 MiB at this width.
constexpr int kMaxWidth = 1 << 17;
// Little larger on disk than the best compression, in a third of the time.
constexpr int kQuality = 90;

struct CutterTexts {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PictureCutter)
};

int TilesFor(int pixels) {
  return (pixels + kTileSide - 1) / kTileSide;
}

// Cuts the finest level from the image, then makes each coarser level from the one before, down to
// a level of one tile.
class Cutting {
 public:
  Cutting(PictureRows& rows, QString folder, const std::atomic<bool>& stops,
          const std::function<void(int)>& progress)
      : myRows(rows), myFolder(std::move(folder)), myStops(stops), myProgress(progress) {
    myColumns = TilesFor(rows.Size().width());
    myTileRows = TilesFor(rows.Size().height());
    while ((1 << myFinest) < std::max(myColumns, myTileRows))
      ++myFinest;
    // The coarser levels together have a third as many tiles.
    myTotal = std::max(1, myColumns * myTileRows * 4 / 3);
  }

  QString Cut() {
    if (!CutFinest()) return Error();
    for (int level = myFinest - 1; level >= 0; --level) {
      if (!CutCoarser(level)) return Error();
    }
    return {};
  }

 private:
  bool CutFinest() {
    if (!MakeFolders(myFinest, myColumns)) return false;
    for (int row = 0; row < myTileRows;) {
      QImage strip = myRows.Next(kTileSide);
      if (strip.isNull()) {
        myError = CutterTexts::tr("the file is damaged");
        return false;
      }
      // Makes the parts of tiles beyond the edge transparent.
      strip.convertTo(QImage::Format_ARGB32);
      for (int top = 0; top < strip.height(); top += kTileSide, ++row) {
        for (int column = 0; column < myColumns; ++column) {
          const QRect part(column * kTileSide, top, kTileSide, kTileSide);
          if (!Write({strip.copy(part)}, myFinest, column, row)) return false;
        }
      }
    }
    return true;
  }

  bool CutCoarser(int level) {
    const int finer = level + 1;
    const int columns = (myColumns + (1 << (myFinest - level)) - 1) >> (myFinest - level);
    const int rows = (myTileRows + (1 << (myFinest - level)) - 1) >> (myFinest - level);
    if (!MakeFolders(level, columns)) return false;
    for (int column = 0; column < columns; ++column) {
      for (int row = 0; row < rows; ++row) {
        QImage four(2 * kTileSide, 2 * kTileSide, QImage::Format_ARGB32_Premultiplied);
        four.fill(Qt::transparent);
        QPainter painter(&four);
        for (int part = 0; part < 4; ++part) {
          const QImage tile(FileOf(finer, 2 * column + part % 2, 2 * row + part / 2));
          painter.drawImage(part % 2 * kTileSide, part / 2 * kTileSide, tile);
        }
        painter.end();
        const QImage one =
            four.scaled(kTileSide, kTileSide, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        if (!Write(one, level, column, row)) return false;
      }
    }
    return true;
  }

  bool MakeFolders(int level, int columns) {
    for (int column = 0; column < columns; ++column) {
      if (QDir().mkpath(QFileInfo(FileOf(level, column, 0)).path())) continue;
      myError = CutterTexts::tr("the folder %1 cannot be written").arg(myFolder);
      return false;
    }
    return true;
  }

  bool Write(const QImage& tile, int level, int column, int row) {
    if (myStops) return false;
    QImageWriter writer(FileOf(level, column, row), "png");
    writer.setQuality(kQuality);
    if (!writer.write(tile)) {
      myError = writer.errorString();
      return false;
    }
    const int percent = std::min(100, ++myDone * 100 / myTotal);
    if (percent != myPercent) myProgress(myPercent = percent);
    return true;
  }

  QString FileOf(int level, int column, int row) const {
    return QStringLiteral("%1/%2/%3/%4.png").arg(myFolder).arg(level).arg(column).arg(row);
  }

  QString Error() const { return myError.isEmpty() ? CutterTexts::tr("stopped") : myError; }

  PictureRows& myRows;
  QString myFolder;
  const std::atomic<bool>& myStops;
  const std::function<void(int)>& myProgress;
  int myColumns = 0;
  int myTileRows = 0;
  int myFinest = 0;
  int myTotal = 0;
  int myDone = 0;
  int myPercent = -1;
  QString myError;
};

}  // namespace

QString TileFolderOf(const QString& image, const QString& cache) {
  const QFileInfo file(image);
  const QString identity = QStringLiteral("%1|%2|%3")
                               .arg(file.absoluteFilePath())
                               .arg(file.size())
                               .arg(file.lastModified().toMSecsSinceEpoch());
  const QByteArray name = QCryptographicHash::hash(identity.toUtf8(), QCryptographicHash::Sha256);
  return cache + '/' + QString::fromLatin1(name.toHex().left(32));
}

QString CutPicture(const QString& image, const QString& folder, const std::atomic<bool>& stops,
                   const std::function<void(int percent)>& progress) {
  if (QFileInfo(image).isDir()) return CutterTexts::tr("it is a folder");
  // Opening a pipe would block until it has a writer.
  if (!QFileInfo(image).isFile()) return CutterTexts::tr("there is no such file");
  QString error;
  const std::unique_ptr<PictureRows> rows = PictureRows::Open(image, error);
  if (!rows) return error;
  if (rows->Size().width() > kMaxWidth)
    return CutterTexts::tr("it is wider than %1 pixels").arg(kMaxWidth);
  // Written next to its final place, and renamed when complete.
  QDir().mkpath(QFileInfo(folder).path());
  QTemporaryDir unfinished(folder + QStringLiteral("-XXXXXX"));
  if (!unfinished.isValid()) return unfinished.errorString();
  error = Cutting(*rows, unfinished.path(), stops, progress).Cut();
  if (!error.isEmpty()) return error;
  if (!QDir().rename(unfinished.path(), folder))
    return CutterTexts::tr("the folder %1 cannot be written").arg(folder);
  unfinished.setAutoRemove(false);
  return {};
}

}  // namespace corvane::map
