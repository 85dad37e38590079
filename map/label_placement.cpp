#include "map/label_placement.h"

#include <algorithm>
#include <cstddef>

namespace corvane::map {
namespace {

constexpr int kWordBits = 64;

}  // namespace

LabelPlacement::LabelPlacement(const QRect& window)
    : myWindow(window),
      myWordsPerRow((window.width() + kWordBits - 1) / kWordBits),
      myOccupied(static_cast<std::size_t>(myWordsPerRow) *
                 static_cast<std::size_t>(window.height())) {}

template <typename Act>
bool LabelPlacement::ForEachWord(const QRect& place, Act act) const {
  const QRect pixels = (place & myWindow).translated(-myWindow.topLeft());
  if (pixels.isEmpty()) return true;
  for (int word = pixels.left() / kWordBits; word <= pixels.right() / kWordBits; ++word) {
    const int first = std::max(pixels.left() - word * kWordBits, 0);
    const int last = std::min(pixels.right() - word * kWordBits, kWordBits - 1);
    const std::uint64_t mask = (~std::uint64_t{} >> (kWordBits - 1 - last + first)) << first;
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
      if (!act(static_cast<std::size_t>(y) * static_cast<std::size_t>(myWordsPerRow) +
                   static_cast<std::size_t>(word),
               mask))
        return false;
    }
  }
  return true;
}

void LabelPlacement::Avoid(const QRect& place) {
  ForEachWord(place, [this](std::size_t word, std::uint64_t mask) {
    myOccupied[word] |= mask;
    return true;
  });
}

bool LabelPlacement::IsFree(const QRect& place) const {
  return myWindow.contains(place) &&
         ForEachWord(place, [this](std::size_t word, std::uint64_t mask) {
           return (myOccupied[word] & mask) == 0;
         });
}

bool LabelPlacement::Take(const QRect& place) {
  const bool isFree = IsFree(place);
  if (isFree) Avoid(place);
  return isFree;
}

}  // namespace corvane::map
