#pragma once

#include <optional>
#include <vector>

#include <QHash>
#include <QRect>
#include <QSize>
#include <QString>

namespace corvane::map {

// The number of a tile. Higher levels are finer.
struct TileId {
  int level = 0;
  int column = 0;
  int row = 0;

  bool operator==(const TileId&) const = default;
};

inline std::size_t qHash(const TileId& id, std::size_t seed = 0) {
  return qHashMulti(seed, id.level, id.column, id.row);
}

// A folder level/column/row.png of square tiles; each level is twice as fine as the one before.
// Rectangles are in pixels of the finest level. Only Open lists the folder.
class TilePyramid {
 public:
  // None if the folder has no tiles, or tiles that are not square.
  static std::optional<TilePyramid> Open(const QString& folder);

  int FinestLevel() const { return myFinest; }
  int CoarsestLevel() const { return myCoarsest; }
  // The pixels of a tile's edge.
  int TileSide() const { return myTileSide; }
  // The area of the finest tiles, which exceeds the picture's by less than a tile.
  QRectF Bounds() const { return myBounds; }
  QString FileOf(const TileId& id) const;

  // The level whose pixels are nearest in size to the screen's. `screenPixels` is the size of a
  // pixel of the finest level on the screen.
  int LevelFor(double screenPixels) const;
  // The tiles of the level that touch the rectangle. Empty if they are far more than a window
  // shows.
  std::vector<TileId> TilesAt(int level, const QRectF& rectangle) const;
  QRectF PlaceOf(const TileId& id) const;

 private:
  double SideAt(int level) const {
    return myTileSide * static_cast<double>(1 << (myFinest - level));
  }

  QString myFolder;
  QString mySuffix;
  int myFinest = 0;
  int myCoarsest = 0;
  int myTileSide = 0;
  QRectF myBounds;
};

}  // namespace corvane::map
