#include "map/label_placement.h"

#include <algorithm>

namespace corvane::map {
namespace {

constexpr int kCellWidth = 128;
constexpr int kCellHeight = 32;

int Cell(int at, int size) {
  return at >= 0 ? at / size : (at - size + 1) / size;
}

std::int64_t Key(int column, int row) {
  return static_cast<std::int64_t>(column) << 32 | static_cast<std::uint32_t>(row);
}

// Calls `act` with the key of each cell that the place touches. Stops and returns false as soon as
// `act` does.
template <typename Act>
bool ForEachCell(const QRect& place, Act act) {
  const int right = Cell(place.right(), kCellWidth);
  const int bottom = Cell(place.bottom(), kCellHeight);
  for (int x = Cell(place.left(), kCellWidth); x <= right; ++x) {
    for (int y = Cell(place.top(), kCellHeight); y <= bottom; ++y) {
      if (!act(Key(x, y))) return false;
    }
  }
  return true;
}

}  // namespace

void LabelPlacement::Avoid(const QRect& place) {
  ForEachCell(place, [&](std::int64_t cell) {
    myCells[cell].push_back(place);
    return true;
  });
}

bool LabelPlacement::Take(const QRect& place) {
  const bool isFree = myWindow.contains(place) && ForEachCell(place, [&](std::int64_t key) {
                        return std::ranges::none_of(myCells[key], [&](const QRect& taken) {
                          return taken.intersects(place);
                        });
                      });
  if (isFree) Avoid(place);
  return isFree;
}

}  // namespace corvane::map
