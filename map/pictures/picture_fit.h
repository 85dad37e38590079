#pragma once

#include <QPointF>
#include <QString>

namespace corvane::map {

// A place that is known on a picture, in its pixels, and on the map.
struct KnownPlace {
  QPointF pixel;
  QPointF place;
};

// Where a picture lies on the map.
struct PictureFit {
  QPointF corner;
  double unitsPerPixel = 1;
  QString error;  // why the places do not fit; empty if they do
};

// Fits a picture to two known places. Refuses places nearer to each other than a twentieth of
// `side`, the picture's longer side in pixels, and those for which it would have to be stretched or
// turned by more than a few percent.
PictureFit FitPicture(const KnownPlace& first, const KnownPlace& second, double side);

}  // namespace corvane::map
