#include "map/pictures/picture_fit.h"

#include <cmath>

#include <QCoreApplication>

namespace corvane::map {
namespace {

constexpr double kMinShare = 1.0 / 20;
constexpr double kMaxDeviation = 0.03;

struct FitTexts {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PictureFit)
};

double Length(QPointF line) {
  return std::hypot(line.x(), line.y());
}

}  // namespace

PictureFit FitPicture(const KnownPlace& first, const KnownPlace& second, double side) {
  PictureFit fit;
  const QPointF pixels = second.pixel - first.pixel;
  const QPointF units = second.place - first.place;
  if (Length(pixels) < side * kMinShare) {
    fit.error = FitTexts::tr("The two places are too close to each other on the picture.");
    return fit;
  }
  // The least squares' scale.
  fit.unitsPerPixel = QPointF::dotProduct(pixels, units) / QPointF::dotProduct(pixels, pixels);
  const double deviation = Length(units - fit.unitsPerPixel * pixels);
  if (fit.unitsPerPixel <= 0 || deviation > kMaxDeviation * Length(units)) {
    const bool hasBoth = std::abs(pixels.x()) >= side * kMinShare / 2 &&
                         std::abs(pixels.y()) >= side * kMinShare / 2;
    fit.error = hasBoth ? FitTexts::tr(
                              "The two places do not fit: a pixel would be %1 units wide and "
                              "%2 units high. Check their coordinates.")
                              .arg(units.x() / pixels.x(), 0, 'g', 4)
                              .arg(units.y() / pixels.y(), 0, 'g', 4)
                        : FitTexts::tr(
                              "The two places do not fit: on the map they do not lie in the "
                              "same direction from each other as on the picture. Check their "
                              "coordinates.");
    return fit;
  }
  fit.corner =
      (first.place + second.place) / 2 - fit.unitsPerPixel * (first.pixel + second.pixel) / 2;
  return fit;
}

}  // namespace corvane::map
