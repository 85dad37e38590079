#include "map/circle_art.h"

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {

void PaintCircle(QPainter& painter, const QRectF& part, const AlarmCircle& circle) {
  const QTransform toView = painter.worldTransform();
  const double radius = circle.radius * toView.m11();
  const QPointF centre = toView.map(QPointF(circle.centre));
  const QRectF bounds(centre - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius));
  const QString name = VisibleText(TextFromDisplay(circle.name));
  QRect sign(QPoint(), painter.fontMetrics().size(0, name) + QSize(8, 2));
  // The name stands on the upper edge, where members inside do not hide it.
  sign.moveCenter(QPointF(centre.x(), bounds.top()).toPoint());
  if (!bounds.united(sign).intersects(toView.mapRect(part))) return;

  painter.save();
  painter.resetTransform();
  // The cost of a wide pen and of a smooth area grows with the radius: a circle that is far larger
  // than the window would take seconds. Thin rings and a coarse area cost the same at any radius.
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0xd9, 0x82, 0x1b, 30));
  painter.drawEllipse(bounds);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(Qt::NoBrush);
  const double pixel = 1 / painter.device()->devicePixelRatioF();
  for (double inner = -pixel; inner < 2; inner += pixel) {
    // Two colours, visible on light and dark pictures.
    painter.setPen(QPen(inner < 0 ? QColor(255, 255, 255, 150) : QColor(0xb3, 0x5c, 0x00), 0));
    painter.drawEllipse(bounds.adjusted(inner, inner, -inner, -inner));
  }
  if (!name.isEmpty()) {
    painter.fillRect(sign, QColor(0x5c, 0x33, 0x00, 200));
    painter.setPen(Qt::white);
    painter.drawText(sign, Qt::AlignCenter, name);
  }
  painter.restore();
}

}  // namespace corvane::map
