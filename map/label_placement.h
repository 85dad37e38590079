#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include <QRect>

namespace corvane::map {

// Decides which names are shown, so that they do not pile up: a name is shown where it is wholly in
// the window and meets none that came before it. Cost goes by the number of names and not by its
// square.
class LabelPlacement {
 public:
  explicit LabelPlacement(const QRect& window) : myWindow(window) {}

  // No name is to lie there.
  void Avoid(const QRect& place);
  // Takes the place if it is free; whether it is.
  bool Take(const QRect& place);

 private:
  QRect myWindow;
  // What was taken, by each cell of the window that it touches.
  std::unordered_map<std::int64_t, std::vector<QRect>> myCells;
};

}  // namespace corvane::map
