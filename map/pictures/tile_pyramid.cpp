#include "map/pictures/tile_pyramid.h"

#include <algorithm>
#include <cmath>

#include <QDir>
#include <QImageReader>

namespace corvane::map {
namespace {

// More than any picture needs, and small enough for tile numbers to fit an int.
constexpr int kMaxLevel = 24;
// More than a window shows at a fitting level. Exceeded only if the folder lacks the coarse levels.
constexpr double kMaxTiles = 2000;

// The numbers among the folder's entries, ascending.
std::vector<int> Numbers(const QString& folder, QDir::Filters kind) {
  std::vector<int> numbers;
  for (const QString& name : QDir(folder).entryList(kind | QDir::NoDotAndDotDot)) {
    bool isNumber = false;
    const int number = name.section('.', 0, 0).toInt(&isNumber);
    if (isNumber && number >= 0) numbers.push_back(number);
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

}  // namespace

std::optional<TilePyramid> TilePyramid::Open(const QString& folder) {
  std::vector<int> levels = Numbers(folder, QDir::Dirs);
  std::erase_if(levels, [](int level) { return level > kMaxLevel; });
  if (levels.empty()) return std::nullopt;
  TilePyramid pyramid;
  pyramid.myFolder = folder;
  pyramid.myCoarsest = levels.front();
  pyramid.myFinest = levels.back();

  const QString finest = folder + '/' + QString::number(pyramid.myFinest);
  const std::vector<int> columns = Numbers(finest, QDir::Dirs);
  if (columns.empty()) return std::nullopt;
  const QDir first(finest + '/' + QString::number(columns.front()));
  const std::vector<int> rows = Numbers(first.path(), QDir::Files);
  if (rows.empty()) return std::nullopt;
  const QStringList files =
      first.entryList({QString::number(rows.front()) + QStringLiteral(".*")}, QDir::Files);
  pyramid.mySuffix = files.front().section('.', 1);
  const QSize size = QImageReader(first.filePath(files.front())).size();
  if (size.width() <= 0 || size.width() != size.height()) return std::nullopt;
  pyramid.myTileSide = size.width();
  const double side = pyramid.myTileSide;
  pyramid.myBounds = QRectF(columns.front() * side, rows.front() * side,
                            (columns.back() - columns.front() + 1) * side,
                            (rows.back() - rows.front() + 1) * side);
  return pyramid;
}

QString TilePyramid::FileOf(const TileId& id) const {
  return QStringLiteral("%1/%2/%3/%4.%5")
      .arg(myFolder)
      .arg(id.level)
      .arg(id.column)
      .arg(id.row)
      .arg(mySuffix);
}

int TilePyramid::LevelFor(double screenPixels) const {
  const double finer = std::log2(std::max(screenPixels, 1e-9));
  return std::clamp(myFinest + static_cast<int>(std::lround(finer)), myCoarsest, myFinest);
}

std::vector<TileId> TilePyramid::TilesAt(int level, const QRectF& rectangle) const {
  std::vector<TileId> tiles;
  const QRectF covered = rectangle & myBounds;
  if (covered.isEmpty()) return tiles;
  const double side = SideAt(level);
  if (covered.width() / side * covered.height() / side > kMaxTiles) return tiles;
  const auto first = [side](double edge) { return static_cast<int>(std::floor(edge / side)); };
  const auto last = [side](double edge) { return static_cast<int>(std::ceil(edge / side)) - 1; };
  for (int row = first(covered.top()); row <= last(covered.bottom()); ++row) {
    for (int column = first(covered.left()); column <= last(covered.right()); ++column)
      tiles.push_back({level, column, row});
  }
  return tiles;
}

QRectF TilePyramid::PlaceOf(const TileId& id) const {
  const double side = SideAt(id.level);
  return {id.column * side, id.row * side, side, side};
}

}  // namespace corvane::map
