#include "map/crowds.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace corvane::map {
namespace {

using Indexes = std::vector<std::size_t>;

// Points sorted by squares as wide as the radius, so all within it of a place are in nine of them.
class PointSquares {
 public:
  explicit PointSquares(const std::vector<QPointF>& points)
      : myPoints(points), myIsTaken(points.size()) {
    for (std::size_t i = 0; i < points.size(); ++i)
      mySorted.emplace_back(SquareOf(points[i]), i);
    std::ranges::sort(mySorted);
  }

  bool IsTaken(std::size_t point) const { return myIsTaken[point]; }
  void Take(const Indexes& points) {
    for (const std::size_t point : points)
      myIsTaken[point] = true;
  }

  // The points within the radius that are not taken; none if there are too few for a crowd.
  Indexes Near(QPointF place) const {
    Indexes found;
    for (const std::int64_t row : {-kRow, std::int64_t{0}, kRow}) {
      const std::int64_t square = SquareOf(place) + row;
      auto at = std::ranges::lower_bound(mySorted, std::pair(square - 1, std::size_t{0}));
      for (; at != mySorted.end() && at->first <= square + 1; ++at) {
        const QPointF distance = myPoints[at->second] - place;
        const double squared = QPointF::dotProduct(distance, distance);
        if (squared <= kCrowdRadius * kCrowdRadius && !myIsTaken[at->second])
          found.push_back(at->second);
      }
    }
    if (found.size() < kMinCrowd) found.clear();
    return found;
  }

 private:
  static constexpr std::int64_t kRow = 1 << 20;  // squares; a window has fewer

  static std::int64_t SquareOf(QPointF point) {
    return static_cast<std::int64_t>(std::floor(point.y() / kCrowdRadius)) * kRow +
           static_cast<std::int64_t>(std::floor(point.x() / kCrowdRadius));
  }

  const std::vector<QPointF>& myPoints;
  std::vector<std::pair<std::int64_t, std::size_t>> mySorted;  // square and point
  std::vector<bool> myIsTaken;
};

}  // namespace

std::vector<Indexes> FindCrowds(const std::vector<QPointF>& points) {
  PointSquares squares(points);
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
