#include "map/grid.h"

#include <cmath>

#include <QString>

namespace corvane::map {
namespace {

constexpr double kMinPixels = 90;

// The smallest of 1, 2, 5, 10, 20... whose lines are far enough apart.
double StepFor(double scale) {
  const double minStep = kMinPixels / scale;
  const double power = std::pow(10, std::floor(std::log10(minStep)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (power * factor >= minStep) return std::max(1.0, power * factor);
  }
  return std::max(1.0, power * 10);
}

}  // namespace

void DrawGrid(QPainter& painter, const QRectF& part, const QColor& ink) {
  const QTransform toView = painter.worldTransform();
  const double step = StepFor(toView.m11());
  // The label of a crossing just outside reaches into the part.
  const double left = std::floor(part.left() / step - 1) * step;
  const double top = std::floor(part.top() / step - 1) * step;
  painter.save();
  painter.resetTransform();
  QColor faint = ink;
  faint.setAlphaF(0.25F);
  painter.setPen(faint);
  const QRectF window = toView.mapRect(part);
  for (double x = left; x <= part.right(); x += step) {
    const double at = std::round(toView.map(QPointF(x, 0)).x());
    painter.drawLine(QPointF(at, window.top()), QPointF(at, window.bottom()));
  }
  for (double y = top; y <= part.bottom(); y += step) {
    const double at = std::round(toView.map(QPointF(0, y)).y());
    painter.drawLine(QPointF(window.left(), at), QPointF(window.right(), at));
  }
  QColor text = ink;
  text.setAlphaF(0.6F);
  painter.setPen(text);
  for (double x = left; x <= part.right(); x += step) {
    for (double y = top; y <= part.bottom(); y += step) {
      const QPointF at = toView.map(QPointF(x, y));
      painter.drawText(at + QPointF(3, -3),
                       QStringLiteral("%1, %2").arg(x, 0, 'f', 0).arg(y, 0, 'f', 0));
    }
  }
  painter.restore();
}

}  // namespace corvane::map
