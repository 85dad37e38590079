#pragma once

#include <array>

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

// Draws markers and what belongs to them. Caches a pixmap for each shape. All marks have two
// colours, so that they are visible on light and dark pictures.
class MarkerArt {
 public:
  static constexpr int kRadius = 9;       // of the space for a marker, in pixels
  static constexpr int kRingRadius = 17;  // of the space for a highlighted or own marker

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
  static void DrawCrowd(QPainter& painter, QPointF at, std::size_t count, bool isStale);
  // A bar for a share of the hit points, 0 to 1.
  static void DrawBar(QPainter& painter, const QRect& place, double share, bool isStale);

 private:
  const QPixmap& Picture(MarkerShape shape, bool isStale, double scale);

  std::array<QPixmap, 8> myPictures;  // two for each shape: fresh, stale
  double myScale = 0;                 // device pixels per pixel
};

}  // namespace corvane::map
