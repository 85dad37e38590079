#pragma once

#include <functional>
#include <vector>

#include <QCache>
#include <QObject>
#include <QPixmap>
#include <QThreadPool>

#include "map/pictures/tile_pyramid.h"

namespace corvane::map {

// A cache of a folder's tiles in memory, of at most kMaxKib. Two threads read missing tiles. All
// methods and events belong to the thread that made it; the destructor waits for the readers.
class TileStore {
 public:
  static constexpr int kMaxKib = 96 << 10;

  explicit TileStore(TilePyramid pyramid);
  ~TileStore();
  TileStore(const TileStore&) = delete;
  TileStore& operator=(const TileStore&) = delete;

  // A tile that Find requested is loaded.
  std::function<void(const TileId&)> TileLoaded;

  const TilePyramid& Pyramid() const { return myPyramid; }

  // The tile; an empty pixmap if there is no readable file. Returns null and requests the tile if
  // it is not in memory. Valid until the next turn of Qt's loop.
  const QPixmap* Find(const TileId& id);
  // As Find, but requests nothing.
  const QPixmap* Peek(const TileId& id) const { return myTiles.object(id); }
  // Drops the requests that no reader has begun.
  void ForgetRequests();

 private:
  void Take(const TileId& id, const QImage& image);

  TilePyramid myPyramid;
  QCache<TileId, QPixmap> myTiles;
  std::vector<TileId> myAwaited;
  QObject myReceiver;  // takes the readers' results to the owner's thread
  QThreadPool myReaders;
};

}  // namespace corvane::map
