#include "map/place_picker.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QApplication>
#include <QKeyEvent>

#include "map/marker_board.h"

namespace corvane::map {

void PlacePicker::Start(const QString& what, std::function<void(QPointF)> chosen) {
  Begin(tr("%1 Return takes the middle of the map, Esc cancels.").arg(what));
  myChosen = std::move(chosen);
}

void PlacePicker::StartCircle(std::function<void(const AlarmCircle&)> drawn) {
  Begin(tr("Drag from the middle of the circle to its edge. Esc cancels."));
  myDrawn = std::move(drawn);
  myMap.StopFollowing();
}

void PlacePicker::Begin(const QString& hint) {
  Cancel();
  myBanner.ShowHint(hint);
  myMap.window()->installEventFilter(this);
  myMap.viewport()->installEventFilter(this);
  myMap.setFocus();
}

void PlacePicker::End() {
  myMap.window()->removeEventFilter(this);
  myMap.viewport()->removeEventFilter(this);
  myBanner.ShowHint({});
  myPressed.reset();
  myChosen = nullptr;
  myDrawn = nullptr;
}

void PlacePicker::Cancel() {
  End();
  SetCircle(std::nullopt);
}

bool PlacePicker::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
      return watched != myMap.viewport() && TakeKey(static_cast<QKeyEvent&>(*event));
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
      return watched == myMap.viewport() && TakeMouse(static_cast<const QMouseEvent&>(*event));
    case QEvent::ContextMenu:
      return watched == myMap.viewport();
    default:
      return false;
  }
}

// The window sees the keys of all its controls.
bool PlacePicker::TakeKey(QKeyEvent& event) {
  const bool isEscape = event.key() == Qt::Key_Escape;
  const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
  if (!isEscape && !(isReturn && myChosen && myMap.window()->focusWidget() == &myMap)) return false;
  // Esc is also a shortcut of the map. An accepted override comes again as a key.
  event.accept();
  if (event.type() == QEvent::KeyPress)
    isEscape ? Cancel() : Choose(myMap.viewport()->rect().center());
  return true;
}

// The map still reports the pointer's place while no button is down.
bool PlacePicker::TakeMouse(const QMouseEvent& event) {
  const QPoint at = event.pos();
  if (event.type() == QEvent::MouseMove) {
    if (myPressed && myDrawn) Draw(at);
    return myPressed.has_value();
  }
  const bool isLeft = event.button() == Qt::LeftButton;
  if (event.type() != QEvent::MouseButtonRelease) {
    if (isLeft) myPressed = at;
  } else if (!isLeft) {
    Cancel();
  } else if (myChosen) {
    Choose(at);
  } else if (myPressed &&
             (at - *myPressed).manhattanLength() >= QApplication::startDragDistance()) {
    Draw(at);
    const auto drawn = std::exchange(myDrawn, nullptr);
    End();
    drawn(*myCircle);
  } else {
    // A click alone draws nothing.
    myPressed.reset();
    SetCircle(std::nullopt);
  }
  return true;
}

void PlacePicker::Choose(QPoint inView) {
  const auto chosen = std::exchange(myChosen, nullptr);
  End();
  chosen(WholePlace(myMap.mapToScene(inView)));
}

void PlacePicker::Draw(QPoint to) {
  const auto place = [this](QPoint at) {
    const QPointF exact = myMap.mapToScene(at);
    return QPointF(std::clamp(exact.x(), -kMaxCoordinate, kMaxCoordinate),
                   std::clamp(exact.y(), -kMaxCoordinate, kMaxCoordinate));
  };
  const QPointF centre = place(*myPressed);
  const QPointF edge = place(to);
  const double radius = std::hypot(edge.x() - centre.x(), edge.y() - centre.y());
  SetCircle(AlarmCircle{{},
                        myMap.Scene()->Facet(),
                        centre.toPoint(),
                        std::max(1, static_cast<int>(std::lround(radius)))});
}

void PlacePicker::SetCircle(const std::optional<AlarmCircle>& circle) {
  if (circle == myCircle) return;
  myCircle = circle;
  myMap.resetCachedContent();
  myMap.viewport()->update();
}

QPointF WholePlace(QPointF place) {
  return {std::floor(place.x()), std::floor(place.y())};
}

}  // namespace corvane::map
