#pragma once

#include <QPainter>

#include "map/alarms/alarm_rules.h"

namespace corvane::map {

// Draws the circle with its name, if the exposed part of the map shows any of it. The painter's
// world transform maps the map into the window.
void PaintCircle(QPainter& painter, const QRectF& part, const AlarmCircle& circle);

}  // namespace corvane::map
