#pragma once

#include <QCache>
#include <QFont>
#include <QPainter>
#include <QPixmap>
#include <QRect>
#include <QString>

namespace corvane::map {

// White on this dark red has a contrast of 6.5, on light and dark windows alike.
inline constexpr QColor kAlarmGround(0xb3, 0x26, 0x1e);
inline constexpr QColor kAlarmText(0xff, 0xff, 0xff);

inline constexpr int kAlarmReach = 16;  // from the middle of a marker, in pixels

// Marks markers with an alarm: an octagon around the marker, and a sign below it. Caches pixmaps.
class AlarmArt {
 public:
  // Called before drawing.
  void Prepare(const QFont& font, double scale);

  // The spaces of the octagon and of the sign.
  static QRect OctagonRect(QPointF marker) {
    return {marker.toPoint() - QPoint(kAlarmReach, kAlarmReach),
            QSize(2 * kAlarmReach, 2 * kAlarmReach)};
  }
  QRect SignRect(QPointF marker, const QString& text);

  // Draws nothing for an empty text.
  void Draw(QPainter& painter, QPointF marker, const QString& text, bool showsSign);

 private:
  void DrawOctagon();
  const QPixmap& Sign(const QString& text);

  QFont myFont;
  double myScale = 0;  // device pixels per pixel
  QPixmap myOctagon;
  QCache<QString, QPixmap> mySigns{200};
};

}  // namespace corvane::map
