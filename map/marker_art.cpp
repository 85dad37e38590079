#include "map/marker_art.h"

#include <algorithm>
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
constexpr QColor kSelected(0xff, 0xe0, 0x2e);
constexpr QColor kFollowed(0x5a, 0xf0, 0xff);
constexpr QColor kCrowd(0x1d, 0x3a, 0x5c);
constexpr QColor kCrowdStale(0x5c, 0x61, 0x67);
constexpr QColor kBarHigh(0x5f, 0xd0, 0x7a);
constexpr QColor kBarMiddle(0xf5, 0xc0, 0x3a);
constexpr QColor kBarLow(0xff, 0x6b, 0x5e);
constexpr QColor kBarStale(0xc0, 0xc4, 0xc8);

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

void DrawEllipse(QPainter& painter, QPointF at, int radius, const QPen& edge, const QPen& line,
                 const QBrush& ground) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(edge);
  painter.setBrush(ground);
  painter.drawEllipse(at.toPoint(), radius, radius);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(line);
  painter.drawEllipse(at.toPoint(), radius, radius);
  painter.setRenderHint(QPainter::Antialiasing, false);
}

}  // namespace

MarkerShape ShapeOf(const client::Report& report) {
  if (report.isDead) return MarkerShape::Dead;
  return report.inBattle ? MarkerShape::Fighting : MarkerShape::Alive;
}

QPixmap NewPicture(QSize size, double scale) {
  QPixmap picture(size * scale);
  picture.setDevicePixelRatio(scale);
  picture.fill(Qt::transparent);
  return picture;
}

void MarkerArt::Prepare(const QFont& font, double scale) {
  if (font == myFont && scale == myScale) return;
  myFont = font;
  myScale = scale;
  myPictures.clear();
}

template <typename Paint>
const QPixmap& MarkerArt::Picture(Kind kind, std::size_t number, bool isStale, QSize size,
                                  Paint paint) {
  const std::size_t key = number << 3 | static_cast<std::size_t>(kind) << 1 | (isStale ? 1U : 0U);
  if (const QPixmap* known = myPictures.object(key)) return *known;
  auto* picture = new QPixmap(NewPicture(size, myScale));
  QPainter painter(picture);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setFont(myFont);
  paint(painter);
  painter.end();
  myPictures.insert(key, picture);
  return *picture;
}

void MarkerArt::Draw(QPainter& painter, QPointF at, MarkerShape shape, bool isStale) {
  const QSize size(2 * kRadius, 2 * kRadius);
  const auto number = static_cast<std::size_t>(shape);
  const QPixmap& picture = Picture(Kind::Marker, number, isStale, size, [&](QPainter& inner) {
    inner.translate(kRadius, kRadius);
    inner.setPen(QPen(Qt::white, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    inner.drawPath(Outline(shape));
    inner.setPen(QPen(Qt::black, 1));
    inner.setBrush(Colour(shape, isStale));
    inner.drawPath(Outline(shape));
  });
  painter.drawPixmap((at - QPointF(kRadius, kRadius)).toPoint(), picture);
}

void MarkerArt::DrawRing(QPainter& painter, QPointF at) {
  DrawEllipse(painter, at, kRadius + 2, QPen(Qt::black, 4), QPen(kSelected, 2), Qt::NoBrush);
}

void MarkerArt::DrawCorners(QPainter& painter, QPointF at) {
  constexpr int kSide = kRingRadius - 2;
  constexpr int kLength = 7;
  const QPointF middle = at.toPoint();
  for (const QPen& pen : {QPen(Qt::black, 5, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin),
                          QPen(kFollowed, 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin)}) {
    painter.setPen(pen);
    for (const QPointF& to : {QPointF(-1, -1), QPointF(1, -1), QPointF(1, 1), QPointF(-1, 1)}) {
      const QPointF corner = middle + to * kSide;
      const QPointF ends[] = {corner - QPointF(to.x() * kLength, 0), corner,
                              corner - QPointF(0, to.y() * kLength)};
      painter.drawPolyline(ends, 3);
    }
  }
}

void MarkerArt::DrawHalo(QPainter& painter, QPointF at) {
  QColor ground = kOwn;
  ground.setAlpha(90);
  DrawEllipse(painter, at, kRadius + 4, QPen(Qt::white, 4), QPen(kOwn, 2), ground);
}

QRect MarkerArt::CrowdRect(const QFontMetrics& metrics, QPointF at, std::size_t count) {
  constexpr int kMinSide = 28;
  const int height = std::max(kMinSide, metrics.height() + 4);
  const int width = metrics.horizontalAdvance(QString::number(count)) + 12;
  const QSize size(std::max(height, width), height);
  return {at.toPoint() - QPoint(size.width() / 2, size.height() / 2), size};
}

void MarkerArt::DrawCrowd(QPainter& painter, QPointF at, std::size_t count, bool isStale) {
  const QRect place = CrowdRect(painter.fontMetrics(), at, count);
  const QPixmap& picture = Picture(Kind::Crowd, count, isStale, place.size(), [&](QPainter& inner) {
    inner.setBrush(isStale ? kCrowdStale : kCrowd);
    inner.setPen(QPen(Qt::white, 2));
    const QRect ground = QRect({}, place.size()).adjusted(1, 1, -1, -1);
    inner.drawRoundedRect(ground, ground.height() / 2.0, ground.height() / 2.0);
    inner.drawText(ground, Qt::AlignCenter, QString::number(count));
  });
  painter.drawPixmap(place.topLeft(), picture);
}

void MarkerArt::DrawBar(QPainter& painter, QPoint topLeft, double share, bool isStale) {
  const QRect ground = QRect({}, kBar).adjusted(1, 1, -1, -1);
  const QSize part(static_cast<int>(std::ceil(ground.width() * share)), ground.height());
  const QColor colour = isStale        ? kBarStale
                        : share > 0.5  ? kBarHigh
                        : share > 0.25 ? kBarMiddle
                                       : kBarLow;
  const std::size_t number = std::size_t{colour.rgb()} << 8 | static_cast<unsigned>(part.width());
  const QPixmap& picture = Picture(Kind::Bar, number, isStale, kBar, [&](QPainter& inner) {
    inner.fillRect(QRect({}, kBar), Qt::white);
    inner.fillRect(ground, Qt::black);
    inner.fillRect(QRect(ground.topLeft(), part), colour);
  });
  painter.drawPixmap(topLeft, picture);
}

}  // namespace corvane::map
