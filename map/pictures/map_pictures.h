#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

#include <QCoreApplication>
#include <QString>

#include "map/pictures/background.h"
#include "map/pictures/map_picture.h"

namespace corvane::map {

// Finds the tiles of pictures, and cuts images that are not in the cache. Cuts one image at a time.
// The cache keeps the tiles of the last kMaxCachedImages images.
class MapPictures {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MapPictures)

 public:
  static constexpr int kMaxCachedImages = 8;

  explicit MapPictures(QString cacheFolder);

  // The image is cut: FolderFor returns its folder now.
  std::function<void()> Completed;
  // The progress of cutting; 100 also when it fails or is stopped. Set before FolderFor.
  std::function<void(int percent)> Progressed;
  std::function<void(const QString& text)> Failed;

  // The folder with the picture's tiles. If the image has to be cut first, returns none and cuts
  // it; Completed or Failed follows. Stops cutting any other image then.
  std::optional<QString> FolderFor(const MapPicture& picture);
  // Stops cutting, without Completed or Failed.
  void Stop();

 private:
  struct Cutter {
    // Stops it before the thread is waited for.
    ~Cutter() { stops = true; }

    std::atomic<bool> stops = false;
    Background thread;
  };

  void End(const QString& error);
  void RemoveOldest() const;

  QString myCache;
  QString myImage;  // being cut
  std::unique_ptr<Cutter> myCutter;
};

}  // namespace corvane::map
