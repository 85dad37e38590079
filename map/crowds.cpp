#include "map/crowds.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace corvane::map {
namespace {

using Indexes = std::vector<std::size_t>;

// Points by squares of a window as wide as the radius, so all within it of a place are in nine of
// them. Points beyond the window are in its outermost squares.
class PointSquares {
 public:
  PointSquares(const std::vector<QPointF>& points, const QRect& window)
      : myPoints(points),
        myWindow(window),
        myColumns(window.width() / kCrowdRadius + 1),
        myRows(window.height() / kCrowdRadius + 1),
        mySquares(static_cast<std::size_t>(myColumns) * static_cast<std::size_t>(myRows)) {
    for (std::size_t i = 0; i < points.size(); ++i)
      Square(ColumnOf(points[i]), RowOf(points[i])).push_back(i);
  }

  Indexes AllNear(QPointF place) {
    Indexes found;
    ForEachNear(place, [&](const Indexes& square) {
      std::ranges::copy_if(square, std::back_inserter(found), [&](std::size_t point) {
        const QPointF distance = myPoints[point] - place;
        return QPointF::dotProduct(distance, distance) <= kCrowdRadius * kCrowdRadius;
      });
    });
    return found;
  }

  // Removes the marked points from the squares around the place.
  void Remove(const std::vector<bool>& isMarked, QPointF place) {
    ForEachNear(place, [&](Indexes& square) {
      std::erase_if(square, [&](std::size_t point) { return isMarked[point]; });
    });
  }

 private:
  static int Number(double at, int count) {
    return std::clamp(static_cast<int>(std::floor(at / kCrowdRadius)), 0, count - 1);
  }
  int ColumnOf(QPointF place) const { return Number(place.x() - myWindow.left(), myColumns); }
  int RowOf(QPointF place) const { return Number(place.y() - myWindow.top(), myRows); }
  Indexes& Square(int column, int row) {
    return mySquares[static_cast<std::size_t>(row) * static_cast<std::size_t>(myColumns) +
                     static_cast<std::size_t>(column)];
  }

  template <typename Act>
  void ForEachNear(QPointF place, Act act) {
    const int column = ColumnOf(place);
    const int row = RowOf(place);
    for (int y = std::max(row - 1, 0); y <= std::min(row + 1, myRows - 1); ++y) {
      for (int x = std::max(column - 1, 0); x <= std::min(column + 1, myColumns - 1); ++x)
        act(Square(x, y));
    }
  }

  const std::vector<QPointF>& myPoints;
  QRect myWindow;
  int myColumns;
  int myRows;
  std::vector<Indexes> mySquares;
};

}  // namespace

std::vector<std::vector<std::size_t>> FindCrowds(const std::vector<QPointF>& points,
                                                 const QRect& window) {
  PointSquares squares(points, window);
  std::vector<bool> isTaken(points.size());
  std::vector<Indexes> crowds;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (isTaken[i]) continue;
    Indexes crowd = squares.AllNear(points[i]);
    if (crowd.size() < kMinCrowd) continue;
    // The point may stand at the crowd's edge: look again from the middle.
    QPointF middle;
    for (const std::size_t point : crowd)
      middle += points[point] / static_cast<double>(crowd.size());
    if (Indexes better = squares.AllNear(middle); better.size() > crowd.size()) {
      crowd = std::move(better);
    } else {
      middle = points[i];
    }
    for (const std::size_t point : crowd)
      isTaken[point] = true;
    squares.Remove(isTaken, middle);
    crowds.push_back(std::move(crowd));
  }
  return crowds;
}

}  // namespace corvane::map
