#include "viewer/label_placement.h"

#include <algorithm>

namespace corvane::viewer {
namespace {

constexpr int kCellWidth = 128;
constexpr int kCellHeight = 32;

int Cell(int at, int size) {
  return at >= 0 ? at / size : (at - size + 1) / size;
}

std::int64_t Key(int column, int row) {
  return static_cast<std::int64_t>(column) << 32 | static_cast<std::uint32_t>(row);
}

}  // namespace

bool LabelPlacement::Take(const QRect& place) {
  const int left = Cell(place.left(), kCellWidth);
  const int right = Cell(place.right(), kCellWidth);
  const int top = Cell(place.top(), kCellHeight);
  const int bottom = Cell(place.bottom(), kCellHeight);
  const auto meets = [&](const QRect& taken) { return taken.intersects(place); };
  for (int x = left; x <= right; ++x) {
    for (int y = top; y <= bottom; ++y) {
      const auto cell = myCells.find(Key(x, y));
      if (cell != myCells.end() && std::any_of(cell->second.begin(), cell->second.end(), meets))
        return false;
    }
  }
  for (int x = left; x <= right; ++x) {
    for (int y = top; y <= bottom; ++y)
      myCells[Key(x, y)].push_back(place);
  }
  return true;
}

}  // namespace corvane::viewer
