#pragma once

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
  enum class Kind { Marker, Crowd, Bar };

  // The picture of that kind and number; `paint` draws it the first time.
  template <typename Paint>
  const QPixmap& Picture(Kind kind, std::size_t number, bool isStale, QSize size, Paint paint);

  QFont myFont;
  double myScale = 0;
  QCache<std::size_t, QPixmap> myPictures{400};
};

}  // namespace corvane::map
