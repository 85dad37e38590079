#pragma once

#include <optional>

#include <QPoint>
#include <QString>

namespace corvane::map {

// A place as people write it.
struct Coordinates {
  QPoint at;
  std::optional<int> facet{};

  bool operator==(const Coordinates&) const = default;
};

// Reads "1200, 845", "1200 845 2", "(x: 1200; y: 845; facet: 2)" and the like. Cuts decimals. None
// if the text has another form or the place lies beyond kMaxCoordinate.
std::optional<Coordinates> ParseCoordinates(const QString& text);

// "1200, 845"
QString CoordinatesText(int x, int y);

}  // namespace corvane::map
