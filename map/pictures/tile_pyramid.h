#pragma once

#include <optional>
#include <vector>

#include <QHash>
#include <QRect>
#include <QSize>
#include <QString>

namespace corvane::map {

// A tile: column and row at a level.
struct TileId {
  int level = 0;
  int column = 0;
  int row = 0;

  bool operator==(const TileId&) const = default;
};

inline std::size_t qHash(const TileId& id, std::size_t seed = 0) {
  return qHashMulti(seed, id.level, id.column, id.row);
}

// A folder z/x/y.png of square tiles, each level twice as fine as the one before. Places are in
// pixels of the finest level.
class TilePyramid {
 public:
  // None where the folder holds no tiles.
  static std::optional<TilePyramid> Open(const QString& folder);

  int FinestLevel() const { return myFinest; }
  int CoarsestLevel() const { return myCoarsest; }
  // What the tiles of a level cover may be more than the picture, by less than a tile.
  QRectF Bounds() const { return myBounds; }
  QString FileOf(const TileId& id) const;

  // The level whose tiles come nearest to one pixel of theirs on one of the screen, where that many
  // pixels of the screen show one of the finest level.
  int LevelFor(double screenPixels) const;
  // The tiles of the level that touch the rectangle.
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
