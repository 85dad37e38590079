#pragma once

#include <QPainter>
#include <QRectF>

namespace corvane::map {

// Draws lines at round coordinates, at least 90 pixels apart, and labels their crossings. `part` is
// in map units; the painter's transform maps these into the window.
void DrawGrid(QPainter& painter, const QRectF& part, const QColor& ink);

}  // namespace corvane::map
