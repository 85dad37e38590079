#pragma once

#include <array>

#include <QPainter>
#include <QPixmap>

#include "client/report.h"

namespace corvane::map {

// What a marker says about its member: by its shape, so that colours are not needed.
enum class MarkerShape {
  Alive,     // a disc
  Fighting,  // a star
  Dead,      // a cross
  Own        // a square on its tip
};

MarkerShape ShapeOf(const client::Report& report);

// Draws markers of one size on whatever the map shows. Keeps what it has drawn.
class MarkerArt {
 public:
  static constexpr int kRadius = 9;  // of the place that a marker takes

  // Draws it around the origin of the painter.
  void Draw(QPainter& painter, QPointF at, MarkerShape shape, bool isStale);

  // A ring around a marker that is selected.
  static void DrawRing(QPainter& painter, QPointF at);

 private:
  const QPixmap& Picture(MarkerShape shape, bool isStale, double scale);

  std::array<QPixmap, 8> myPictures;  // by shape, not stale before stale
  double myScale = 0;                 // device pixels a pixel
};

}  // namespace corvane::map
