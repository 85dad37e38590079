#pragma once

#include <functional>
#include <vector>

#include <QCache>
#include <QObject>
#include <QPixmap>
#include <QThreadPool>

#include "map/pictures/tile_pyramid.h"

namespace corvane::map {

// The tiles of one folder as far as they are in memory; reads the others beside the window's
// thread. Holds kMaxKib of them at most.
class TileStore {
 public:
  static constexpr int kMaxKib = 96 << 10;

  explicit TileStore(TilePyramid pyramid);
  ~TileStore();
  TileStore(const TileStore&) = delete;
  TileStore& operator=(const TileStore&) = delete;

  // A tile that was looked for has come.
  std::function<void(const TileId&)> TileLoaded;

  const TilePyramid& Pyramid() const { return myPyramid; }

  // The tile, if it is here; an empty picture where there is no such file. Where it is not here it
  // is fetched: null.
  const QPixmap* Find(const TileId& id);
  // The tile if it is here; nothing is fetched.
  const QPixmap* Peek(const TileId& id) const { return myTiles.object(id); }
  // Gives up what was asked for and not begun: the window shows another part by now.
  void ForgetRequests();

 private:
  void Take(const TileId& id, const QImage& image);

  TilePyramid myPyramid;
  QCache<TileId, QPixmap> myTiles;
  std::vector<TileId> myAwaited;
  QObject myReceiver;  // of the readers' results, in the window's thread
  QThreadPool myReaders;
};

}  // namespace corvane::map
