#pragma once

#include <QPointF>
#include <QString>

namespace corvane::map {

// The picture of a facet, and where it lies in the map's own coordinates.
struct MapPicture {
  enum class Kind {
    None,   // a grid instead
    Image,  // one file of any size
    Tiles   // a folder z/x/y.png (or jpg) of square tiles
  };

  Kind kind = Kind::None;
  QString path;
  QPointF corner;            // of the left and top edge
  double unitsPerPixel = 1;  // of the image; of a folder's finest tiles

  bool operator==(const MapPicture&) const = default;
};

}  // namespace corvane::map
