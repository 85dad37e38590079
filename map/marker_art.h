#pragma once

#include <array>

#include <QCache>
#include <QFontMetrics>
#include <QPainter>
#include <QPixmap>

#include "client/report.h"

namespace corvane::map {

// The shapes of markers. A marker's colour says nothing that its shape does not.
enum class MarkerShape {
  Alive,     // a disc
  Fighting,  // a star
  Dead,      // a cross
  Own        // a square on its tip
};

MarkerShape ShapeOf(const client::Report& report);

// A transparent picture. `scale` is in device pixels per pixel.
QPixmap NewPicture(QSize size, double scale);

// Draws markers and what belongs to them. Caches pixmaps. All marks have two colours, so that they
// are visible on light and dark pictures.
class MarkerArt {
 public:
  static constexpr int kRadius = 9;       // of the space for a marker, in pixels
  static constexpr int kRingRadius = 17;  // of the space for a highlighted or own marker
  static constexpr QSize kBar{20, 6};

  // Called before drawing.
  void Prepare(const QFont& font, double scale);

  // Centres the marker on `at`.
  void Draw(QPainter& painter, QPointF at, MarkerShape shape, bool isStale);

  // A ring around the selected marker.
  static void DrawRing(QPainter& painter, QPointF at);
  // Four corners around the followed marker.
  static void DrawCorners(QPainter& painter, QPointF at);
  // The ground of the user's own marker.
  static void DrawHalo(QPainter& painter, QPointF at);
  // The place of a mark for that many markers.
  static QRect CrowdRect(const QFontMetrics& metrics, QPointF at, std::size_t count);
  // One mark for many markers, with their number.
  void DrawCrowd(QPainter& painter, QPointF at, std::size_t count, bool isStale);
  // A bar of the size kBar for a share of the hit points, 0 to 1.
  void DrawBar(QPainter& painter, QPoint topLeft, double share, bool isStale);

 private:
  const QPixmap& Picture(MarkerShape shape, bool isStale);

  QFont myFont;
  double myScale = 0;
  std::array<QPixmap, 8> myPictures;                   // two for each shape: fresh, stale
  std::array<QPixmap, 4 * (kBar.width() - 1)> myBars;  // for each colour, all widths of the share
  QCache<std::size_t, QPixmap> myCrowds{200};
};

}  // namespace corvane::map
