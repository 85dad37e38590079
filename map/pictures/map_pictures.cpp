#include "map/pictures/map_pictures.h"

#include <utility>

#include <QDir>
#include <QFile>

#include "map/pictures/picture_cutter.h"

namespace corvane::map {

MapPictures::MapPictures(QString cacheFolder) : myCache(std::move(cacheFolder)) {}

std::optional<QString> MapPictures::FolderFor(const MapPicture& picture) {
  if (picture.kind != MapPicture::Kind::Image) return picture.path;
  const QString folder = TileFolderOf(picture.path, myCache);
  if (QDir(folder).exists()) return folder;
  if (myCutter && myImage == picture.path) return std::nullopt;
  myImage = picture.path;
  myCutter = std::make_unique<Cutter>();
  myCutter->thread.Run(
      [this, &cutter = *myCutter, image = picture.path, folder] {
        return CutPicture(image, folder, cutter.stops, [&](int percent) {
          cutter.thread.Post([this, percent] {
            if (Progressed) Progressed(percent);
          });
        });
      },
      [this](const QString& error) { End(error); });
  return std::nullopt;
}

void MapPictures::Stop() {
  if (!myCutter) return;
  myCutter.reset();
  if (Progressed) Progressed(100);
}

void MapPictures::End(const QString& error) {
  // The cutter is the caller, so it is destroyed at the end.
  const std::unique_ptr<Cutter> cutter = std::move(myCutter);
  if (Progressed) Progressed(100);
  if (!error.isEmpty()) {
    if (Failed) Failed(tr("The picture %1 cannot be shown: %2").arg(myImage, error));
    return;
  }
  RemoveOldest();
  if (Completed) Completed();
}

void MapPictures::RemoveOldest() const {
  const QDir cache(myCache);
  const QStringList folders = cache.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Time);
  for (qsizetype i = kMaxCachedImages; i < folders.size(); ++i)
    QDir(cache.filePath(folders[i])).removeRecursively();
}

}  // namespace corvane::map
