#include "map/grid.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QFontMetrics>

namespace corvane::map {

double RoundStep(double minPixels, double scale) {
  const double minStep = minPixels / scale;
  const double power = std::pow(10, std::floor(std::log10(minStep)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (power * factor >= minStep) return std::max(1.0, power * factor);
  }
  return std::max(1.0, power * 10);
}

double GridStep(double scale) {
  constexpr int kMinPixels = 90;
  const int longest =
      QFontMetrics(QApplication::font()).horizontalAdvance(QStringLiteral(" -00000000 "));
  return RoundStep(std::max(kMinPixels, longest), scale);
}

QColor GroundColour(const QPalette& palette) {
  const bool isDark = palette.color(QPalette::Base).lightness() < 128;
  return isDark ? QColor(0x20, 0x27, 0x2c) : QColor(0xea, 0xef, 0xf1);
}

void DrawGrid(QPainter& painter, const QRectF& part, const QPalette& palette) {
  const QTransform toView = painter.worldTransform();
  const double step = GridStep(toView.m11());
  painter.save();
  painter.resetTransform();
  QColor ink = palette.color(QPalette::Text);
  ink.setAlphaF(0.14F);
  painter.setPen(ink);
  const QRectF window = toView.mapRect(part);
  for (double x = std::floor(part.left() / step) * step; x <= part.right(); x += step) {
    const double at = std::round(toView.map(QPointF(x, 0)).x());
    painter.drawLine(QPointF(at, window.top()), QPointF(at, window.bottom()));
  }
  for (double y = std::floor(part.top() / step) * step; y <= part.bottom(); y += step) {
    const double at = std::round(toView.map(QPointF(0, y)).y());
    painter.drawLine(QPointF(window.left(), at), QPointF(window.right(), at));
  }
  painter.restore();
}

}  // namespace corvane::map
