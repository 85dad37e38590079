#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include <QRect>

namespace corvane::map {

// Places labels without overlaps. A label is shown if it is completely inside the window and meets
// neither an earlier one nor an obstacle. The cost grows with the number of labels, not with its
// square.
class LabelPlacement {
 public:
  explicit LabelPlacement(const QRect& window) : myWindow(window) {}

  // Marks an obstacle.
  void Avoid(const QRect& place);
  // Occupies the place and returns true if it is free.
  bool Take(const QRect& place);

 private:
  QRect myWindow;
  // Occupied places, in each cell of the window that they touch.
  std::unordered_map<std::int64_t, std::vector<QRect>> myCells;
};

}  // namespace corvane::map
