#include "map/circle_tool.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include "map/marker_board.h"

namespace corvane::map {

CircleTool::CircleTool(MapView& map) : myMap(map) {}

void CircleTool::Start() {
  Stop();
  Clear();
  myMap.StopFollowing();
  myMap.setFocus();
  myMap.installEventFilter(this);
  myMap.viewport()->installEventFilter(this);
}

void CircleTool::Clear() {
  myCircle.reset();
  Redraw();
}

void CircleTool::Redraw() {
  myMap.resetCachedContent();
  myMap.viewport()->update();
}

void CircleTool::Stop() {
  myIsDragging = false;
  myMap.removeEventFilter(this);
  myMap.viewport()->removeEventFilter(this);
}

void CircleTool::Cancel() {
  Stop();
  Clear();
  if (Cancelled) Cancelled();
}

bool CircleTool::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
      if (watched == myMap.viewport()) return TakeMouse(static_cast<const QMouseEvent&>(*event));
      break;
    case QEvent::ShortcutOverride:
      // Esc is also a shortcut of the map.
      if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
      }
      break;
    case QEvent::KeyPress:
      if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        Cancel();
        return true;
      }
      break;
    default:
      break;
  }
  return false;
}

// The map still reports the pointer's place while no button is down.
bool CircleTool::TakeMouse(const QMouseEvent& event) {
  if (event.type() == QEvent::MouseMove) {
    if (myIsDragging) Stretch(event.pos());
    return myIsDragging;
  }
  if (event.button() != Qt::LeftButton) return false;
  if (event.type() != QEvent::MouseButtonRelease) {
    myIsDragging = true;
    myPressed = event.pos();
    return true;
  }
  // A click alone draws nothing.
  if (!myIsDragging ||
      (event.pos() - myPressed).manhattanLength() < QApplication::startDragDistance()) {
    myIsDragging = false;
    Clear();
    return true;
  }
  Stretch(event.pos());
  Stop();
  if (Drawn) Drawn(*myCircle);
  return true;
}

void CircleTool::Stretch(QPoint to) {
  const auto place = [this](QPoint at) {
    const QPointF exact = myMap.mapToScene(at);
    return QPointF(std::clamp(exact.x(), -kMaxCoordinate, kMaxCoordinate),
                   std::clamp(exact.y(), -kMaxCoordinate, kMaxCoordinate));
  };
  const QPointF centre = place(myPressed);
  const QPointF edge = place(to);
  const double radius = std::hypot(edge.x() - centre.x(), edge.y() - centre.y());
  myCircle.emplace();
  myCircle->facet = myMap.Scene()->Facet();
  myCircle->centre = centre.toPoint();
  myCircle->radius = std::max(1, static_cast<int>(std::lround(radius)));
  Redraw();
}

}  // namespace corvane::map
