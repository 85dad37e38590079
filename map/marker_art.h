#pragma once

#include <array>

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

// Draws markers. Caches a pixmap for each shape.
class MarkerArt {
 public:
  static constexpr int kRadius = 9;  // of the space for a marker, in pixels

  // Centres the marker on `at`.
  void Draw(QPainter& painter, QPointF at, MarkerShape shape, bool isStale);

  // Draws the ring around a highlighted marker.
  static void DrawRing(QPainter& painter, QPointF at);

 private:
  const QPixmap& Picture(MarkerShape shape, bool isStale, double scale);

  std::array<QPixmap, 8> myPictures;  // two for each shape: fresh, stale
  double myScale = 0;                 // device pixels per pixel
};

}  // namespace corvane::map
