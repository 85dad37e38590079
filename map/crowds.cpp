#include "map/crowds.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <span>
#include <utility>

namespace corvane::map {
namespace {

using Indexes = std::vector<std::size_t>;

// Points sorted by squares of a window as wide as the radius, so all within it of a place are in
// nine of them. Points beyond the window are in its outermost squares.
class PointSquares {
 public:
  PointSquares(const std::vector<QPointF>& points, const QRect& window)
      : myPoints(points),
        myWindow(window),
        myColumns(window.width() / kCrowdRadius + 1),
        myRows(window.height() / kCrowdRadius + 1),
        myBegins(Square(0, myRows) + 1),
        mySorted(points.size()),
        myIsTaken(points.size()) {
    const auto squareOf = [this](QPointF point) { return Square(ColumnOf(point), RowOf(point)); };
    for (const QPointF& point : myPoints)
      ++myBegins[squareOf(point)];
    // The ends of the squares, which the points then turn into their beginnings.
    std::partial_sum(myBegins.begin(), myBegins.end(), myBegins.begin());
    for (std::size_t i = points.size(); i-- > 0;)
      mySorted[--myBegins[squareOf(points[i])]] = i;
  }

  bool IsTaken(std::size_t point) const { return myIsTaken[point]; }
  void Take(const Indexes& points) {
    for (const std::size_t point : points)
      myIsTaken[point] = true;
  }

  // The points within the radius that are not taken; none if there are too few for a crowd.
  Indexes Near(QPointF place) const {
    const int column = ColumnOf(place);
    const int row = RowOf(place);
    std::vector<std::span<const std::size_t>> rows;
    std::size_t count = 0;
    for (int y = std::max(row - 1, 0); y <= std::min(row + 1, myRows - 1); ++y) {
      const std::size_t begin = myBegins[Square(std::max(column - 1, 0), y)];
      const std::size_t end = myBegins[Square(std::min(column + 1, myColumns - 1), y) + 1];
      rows.emplace_back(mySorted.data() + begin, end - begin);
      count += end - begin;
    }
    Indexes found;
    if (count < kMinCrowd) return found;
    for (const auto& points : rows) {
      std::ranges::copy_if(points, std::back_inserter(found), [&](std::size_t point) {
        const QPointF distance = myPoints[point] - place;
        return !myIsTaken[point] &&
               QPointF::dotProduct(distance, distance) <= kCrowdRadius * kCrowdRadius;
      });
    }
    if (found.size() < kMinCrowd) found.clear();
    return found;
  }

 private:
  static int Number(double at, int count) {
    return std::clamp(static_cast<int>(std::floor(at / kCrowdRadius)), 0, count - 1);
  }
  int ColumnOf(QPointF place) const { return Number(place.x() - myWindow.left(), myColumns); }
  int RowOf(QPointF place) const { return Number(place.y() - myWindow.top(), myRows); }
  std::size_t Square(int column, int row) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(myColumns) +
           static_cast<std::size_t>(column);
  }

  const std::vector<QPointF>& myPoints;
  QRect myWindow;
  int myColumns;
  int myRows;
  Indexes myBegins;  // of each square in mySorted, and its end
  Indexes mySorted;
  std::vector<bool> myIsTaken;
};

}  // namespace

std::vector<std::vector<std::size_t>> FindCrowds(const std::vector<QPointF>& points,
                                                 const QRect& window) {
  PointSquares squares(points, window);
  std::vector<Indexes> crowds;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (squares.IsTaken(i)) continue;
    Indexes crowd = squares.Near(points[i]);
    if (crowd.empty()) continue;
    // The point may stand at the crowd's edge: look again from the middle.
    QPointF middle;
    for (const std::size_t point : crowd)
      middle += points[point] / static_cast<double>(crowd.size());
    if (Indexes better = squares.Near(middle); better.size() > crowd.size())
      crowd = std::move(better);
    squares.Take(crowd);
    crowds.push_back(std::move(crowd));
  }
  return crowds;
}

}  // namespace corvane::map
