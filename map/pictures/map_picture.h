#pragma once

#include <QPointF>
#include <QString>

namespace corvane::map {

// The picture of a facet and its position in map units.
struct MapPicture {
  enum class Kind {
    None,   // a grid
    Image,  // a file of any size
    Tiles   // a folder z/x/y.png (or jpg) of square tiles
  };

  Kind kind = Kind::None;
  QString path;
  QPointF corner;            // top left
  double unitsPerPixel = 1;  // of the image, or of the folder's finest tiles

  bool operator==(const MapPicture&) const = default;
};

}  // namespace corvane::map
