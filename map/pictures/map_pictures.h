#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QCoreApplication>
#include <QString>

#include "map/pictures/map_picture.h"
#include "map/pictures/picture_cutter.h"

namespace corvane::map {

// Finds the tiles of pictures, and has an image cut where that was not done yet. Keeps the tiles of
// the images used last, so that the cache does not grow for good.
class MapPictures {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MapPictures)

 public:
  static constexpr int kMaxCachedImages = 8;

  explicit MapPictures(QString cacheFolder);

  // The tiles of a picture that was asked for are there now.
  std::function<void()> Completed;
  // How far the cutting is, in percent; 100 when nothing is cut any more.
  std::function<void(int percent)> Progressed;
  std::function<void(const QString& text)> Failed;

  // The folder with the picture's tiles. None where the image is being cut, in place of one that
  // was cut before: Ready or Fails follows.
  std::optional<QString> FolderFor(const MapPicture& picture);
  // Nobody waits for what is being cut.
  void Stop();

 private:
  void End(const QString& error);
  void RemoveOldest() const;

  QString myCache;
  QString myImage;  // that is being cut
  std::unique_ptr<PictureCutter> myCutter;
};

}  // namespace corvane::map
