#include "map/marker_art.h"

#include <cmath>
#include <numbers>

#include <QPainterPath>

namespace corvane::map {
namespace {

constexpr QColor kAlive(0x1b, 0x7f, 0xd4);
constexpr QColor kFighting(0xe8, 0x6a, 0x0c);
constexpr QColor kDead(0xb3, 0x1e, 0x3c);
constexpr QColor kOwn(0x1f, 0x9d, 0x55);
constexpr QColor kStale(0x8a, 0x8f, 0x96);

QPainterPath Star(int points, double outer, double inner) {
  QPainterPath path;
  for (int i = 0; i < 2 * points; ++i) {
    const double angle = std::numbers::pi * (i / static_cast<double>(points) - 0.5);
    const double radius = i % 2 == 0 ? outer : inner;
    const QPointF corner(std::cos(angle) * radius, std::sin(angle) * radius);
    i == 0 ? path.moveTo(corner) : path.lineTo(corner);
  }
  path.closeSubpath();
  return path;
}

QPainterPath Outline(MarkerShape shape) {
  QPainterPath path;
  switch (shape) {
    case MarkerShape::Alive:
      path.addEllipse(QPointF(), 5.5, 5.5);
      break;
    case MarkerShape::Fighting:
      path = Star(6, 8, 4);
      break;
    case MarkerShape::Dead:
      path.setFillRule(Qt::WindingFill);
      path.addRect(-7, -2, 14, 4);
      path.addRect(-2, -7, 4, 14);
      path = QTransform().rotate(45).map(path.simplified());
      break;
    case MarkerShape::Own:
      path.addRect(-5.5, -5.5, 11, 11);
      path = QTransform().rotate(45).map(path);
      break;
  }
  return path;
}

QColor Colour(MarkerShape shape, bool isStale) {
  if (isStale) return kStale;
  switch (shape) {
    case MarkerShape::Fighting:
      return kFighting;
    case MarkerShape::Dead:
      return kDead;
    case MarkerShape::Own:
      return kOwn;
    default:
      return kAlive;
  }
}

}  // namespace

MarkerShape ShapeOf(const client::Report& report) {
  if (report.isDead) return MarkerShape::Dead;
  return report.inBattle ? MarkerShape::Fighting : MarkerShape::Alive;
}

void MarkerArt::Draw(QPainter& painter, QPointF at, MarkerShape shape, bool isStale) {
  const QPixmap& picture = Picture(shape, isStale, painter.device()->devicePixelRatioF());
  painter.drawPixmap((at - QPointF(kRadius, kRadius)).toPoint(), picture);
}

void MarkerArt::DrawRing(QPainter& painter, QPointF at) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(Qt::NoBrush);
  // Two colours, visible on light and dark pictures.
  painter.setPen(QPen(Qt::black, 4));
  painter.drawEllipse(at, kRadius + 2, kRadius + 2);
  painter.setPen(QPen(Qt::yellow, 2));
  painter.drawEllipse(at, kRadius + 2, kRadius + 2);
}

const QPixmap& MarkerArt::Picture(MarkerShape shape, bool isStale, double scale) {
  if (scale != myScale) myPictures = {};
  myScale = scale;
  QPixmap& picture = myPictures[2 * static_cast<std::size_t>(shape) + (isStale ? 1 : 0)];
  if (!picture.isNull()) return picture;
  picture = QPixmap(QSize(2 * kRadius, 2 * kRadius) * scale);
  picture.setDevicePixelRatio(scale);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(kRadius, kRadius);
  painter.setPen(QPen(Qt::white, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPath(Outline(shape));
  painter.setPen(QPen(Qt::black, 1));
  painter.setBrush(Colour(shape, isStale));
  painter.drawPath(Outline(shape));
  return picture;
}

}  // namespace corvane::map
