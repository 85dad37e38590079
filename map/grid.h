#pragma once

#include <QColor>
#include <QPainter>
#include <QPalette>
#include <QRectF>

namespace corvane::map {

// The smallest of 1, 2, 5, 10, 20... map units that takes at least so many pixels. `scale` is in
// pixels per map unit.
double RoundStep(double minPixels, double scale);

// The step of the grid and of the coordinates along the map's edges. Grows with the font.
double GridStep(double scale);

// The map's colour beneath the grid and beyond pictures.
QColor GroundColour(const QPalette& palette);

// Draws lines at multiples of GridStep. `part` is in map units; the painter's transform maps these
// into the window.
void DrawGrid(QPainter& painter, const QRectF& part, const QPalette& palette);

}  // namespace corvane::map
