#pragma once

#include <functional>
#include <optional>

#include <QCoreApplication>
#include <QMouseEvent>
#include <QObject>
#include <QPointF>

#include "map/alarms/alarm_rules.h"
#include "map/banner.h"
#include "map/map_view.h"

namespace corvane::map {

// Lets the user choose a place with the next click on the map, or the middle of the map with
// Return; or draw a circle, from its middle to its edge. Esc, the right button and another start
// cancel. The banner says what to do. The wheel and the arrow keys still move the map. Borrows map
// and banner.
class PlacePicker : public QObject {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PlacePicker)

 public:
  PlacePicker(MapView& map, Banner& banner) : myMap(map), myBanner(banner) {}

  // `chosen` is called at most once, with whole map units.
  void Start(const QString& what, std::function<void(QPointF)> chosen);
  // `drawn` is called at most once. The circle has no name yet, and stays until Cancel().
  void StartCircle(std::function<void(const AlarmCircle&)> drawn);
  void Cancel();
  // As drawn so far.
  const std::optional<AlarmCircle>& Circle() const { return myCircle; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Begin(const QString& hint);
  void End();
  bool TakeKey(QKeyEvent& event);
  bool TakeMouse(const QMouseEvent& event);
  void Choose(QPoint inView);
  void Draw(QPoint to);
  void SetCircle(const std::optional<AlarmCircle>& circle);

  MapView& myMap;
  Banner& myBanner;
  // One of the two while it is at work.
  std::function<void(QPointF)> myChosen;
  std::function<void(const AlarmCircle&)> myDrawn;
  std::optional<QPoint> myPressed;
  std::optional<AlarmCircle> myCircle;
};

// A place in whole units, as the status bar shows it.
QPointF WholePlace(QPointF place);

}  // namespace corvane::map
