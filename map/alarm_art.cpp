#include "map/alarm_art.h"

#include <memory>

#include <QFontMetrics>
#include <QPolygonF>

#include "map/marker_art.h"

namespace corvane::map {
namespace {

constexpr double kSide = 13;   // from the middle of the octagon to its sides
constexpr double kHalf = 5.4;  // of a side
constexpr int kSignMargin = 4;
constexpr int kMaxSign = 220;

}  // namespace

void AlarmArt::Prepare(const QFont& font, double scale) {
  if (font == myFont && scale == myScale) return;
  myFont = font;
  myScale = scale;
  mySigns.clear();
  DrawOctagon();
}

QRect AlarmArt::SignRect(QPointF marker, const QString& text) {
  const QSize size = Sign(text).deviceIndependentSize().toSize();
  return {marker.toPoint() + QPoint(-size.width() / 2, kAlarmReach + 1), size};
}

void AlarmArt::Draw(QPainter& painter, QPointF marker, const QString& text, bool showsSign) {
  if (text.isEmpty()) return;
  painter.drawPixmap(OctagonRect(marker).topLeft(), myOctagon);
  if (showsSign) painter.drawPixmap(SignRect(marker, text).topLeft(), Sign(text));
}

void AlarmArt::DrawOctagon() {
  myOctagon = NewPicture({2 * kAlarmReach, 2 * kAlarmReach}, myScale);
  const QPolygonF octagon({{-kHalf, -kSide},
                           {kHalf, -kSide},
                           {kSide, -kHalf},
                           {kSide, kHalf},
                           {kHalf, kSide},
                           {-kHalf, kSide},
                           {-kSide, kHalf},
                           {-kSide, -kHalf}});
  QPainter painter(&myOctagon);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(kAlarmReach, kAlarmReach);
  // Two colours, visible on light and dark pictures.
  painter.setPen(QPen(kAlarmText, 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPolygon(octagon);
  painter.setPen(QPen(kAlarmGround, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPolygon(octagon);
}

const QPixmap& AlarmArt::Sign(const QString& text) {
  if (const QPixmap* known = mySigns.object(text)) return *known;
  const QFontMetrics metrics(myFont);
  const QString shown = metrics.elidedText(text, Qt::ElideRight, kMaxSign);
  auto picture = std::make_unique<QPixmap>(
      NewPicture(metrics.size(Qt::TextSingleLine, shown) + QSize(2 * kSignMargin, 0), myScale));
  picture->fill(kAlarmGround);
  QPainter painter(picture.get());
  painter.setFont(myFont);
  painter.setPen(kAlarmText);
  painter.drawText(QRect(QPoint(), picture->deviceIndependentSize().toSize()), Qt::AlignCenter,
                   shown);
  painter.end();
  QPixmap* const kept = picture.get();
  mySigns.insert(text, picture.release());
  return *kept;
}

}  // namespace corvane::map
