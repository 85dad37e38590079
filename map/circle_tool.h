#pragma once

#include <functional>
#include <optional>

#include <QObject>

#include "map/alarms/alarm_rules.h"
#include "map/map_view.h"

namespace corvane::map {

// Lets the user draw a circle on the map: press in its middle and drag to its edge. Takes the
// mouse of the map from Start() on, until a circle is drawn, or until Esc. Borrows the map.
class CircleTool : public QObject {
 public:
  explicit CircleTool(MapView& map);

  // The user has drawn a circle, which has no name yet. It stays Current() until Clear().
  std::function<void(const AlarmCircle&)> Drawn;
  std::function<void()> Cancelled;

  void Start();
  void Clear();
  // The circle as drawn so far.
  const std::optional<AlarmCircle>& Current() const { return myCircle; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  bool TakeMouse(const QMouseEvent& event);
  void Stretch(QPoint to);
  void Redraw();
  void Stop();
  void Cancel();

  MapView& myMap;
  std::optional<AlarmCircle> myCircle;
  QPoint myPressed;
  bool myIsDragging = false;
};

}  // namespace corvane::map
