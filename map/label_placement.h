#pragma once

#include <cstdint>
#include <vector>

#include <QRect>

namespace corvane::map {

// Places labels without overlaps: a place is free if it is completely inside the window and meets
// neither an earlier label nor an obstacle. Keeps a bit for each pixel, so the cost of a label does
// not depend on the number of others.
class LabelPlacement {
 public:
  explicit LabelPlacement(const QRect& window);

  // Marks an obstacle.
  void Avoid(const QRect& place);
  bool IsFree(const QRect& place) const;
  // Occupies the place and returns true if it is free.
  bool Take(const QRect& place);

 private:
  // Calls `act` with the index of each word of bits that the place touches and the mask of its
  // pixels in it. Stops and returns false as soon as `act` does.
  template <typename Act>
  bool ForEachWord(const QRect& place, Act act) const;

  QRect myWindow;
  int myWordsPerRow;
  std::vector<std::uint64_t> myOccupied;  // row by row
};

}  // namespace corvane::map
