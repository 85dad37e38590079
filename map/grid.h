#pragma once

#include <QPainter>
#include <QRectF>

namespace corvane::map {

// Draws lines at round coordinates about a thumb apart, and the coordinates where they cross. The
// painter maps the map into the window.
void DrawGrid(QPainter& painter, const QRectF& part, const QColor& ink);

}  // namespace corvane::map
