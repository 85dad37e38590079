#include "map/picture_copy.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QSaveFile>

namespace corvane::map {
namespace {

// A PNG is cut in strips, a progressive JPEG is decoded as a whole.
constexpr qint64 kMaxPngPixels = qint64{1} << 28;
constexpr qint64 kMaxJpegPixels = qint64{1} << 26;

struct PictureCopyTexts {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PictureCopy)
};

QString ShortHash(const QByteArray& bytes) {
  const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
  return QString::fromLatin1(hash.toHex().left(32));
}

}  // namespace

PictureCopy CopyPicture(const PlacePicture& picture, const PlaceKey& place, const QString& folder,
                        const QString& used) {
  const QString suffix = ImageSuffix(picture.bytes);
  QByteArray bytes = picture.bytes;
  QBuffer buffer(&bytes);
  const QSize size = QImageReader(&buffer, suffix.toLatin1()).size();
  if (size.isEmpty()) return {{}, PictureCopyTexts::tr("it cannot be read")};
  if (qint64{size.width()} * size.height() > (suffix == "png" ? kMaxPngPixels : kMaxJpegPixels)) {
    return {
        {},
        PictureCopyTexts::tr("%1 x %2 pixels are too many").arg(size.width()).arg(size.height())};
  }
  const QString where = QStringLiteral("%1:%2/%3 %4")
                            .arg(place.host, QString::number(place.port), place.network)
                            .arg(picture.facet);
  const QString beginning = ShortHash(where.toUtf8());
  const QString name = beginning + '-' + ShortHash(bytes) + '.' + suffix;
  QDir copies(folder);
  copies.mkpath(QStringLiteral("."));
  for (const QString& other : copies.entryList({beginning + QStringLiteral("-*")}, QDir::Files)) {
    if (other != name && copies.filePath(other) != used) copies.remove(other);
  }
  const QString path = copies.filePath(name);
  QSaveFile file(path);
  if (QFile::exists(path) ||
      (file.open(QSaveFile::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())) {
    return {path, {}};
  }
  return {{}, file.errorString()};
}

}  // namespace corvane::map
