#pragma once

#include <functional>
#include <optional>

#include <QCoreApplication>
#include <QLabel>
#include <QObject>
#include <QPointF>

#include "map/map_view.h"

namespace corvane::map {

// Lets the user choose a place with the next click on the map, or the middle of the map with
// Return. Esc, the right button and another Start cancel. The wheel and the arrow keys still move
// the map. Borrows the map.
class PlacePicker : public QObject {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PlacePicker)

 public:
  explicit PlacePicker(MapView& map);

  // Shows `what` to do on the map. `chosen` is called at most once, with whole map units.
  void Start(const QString& what, std::function<void(QPointF)> chosen);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Finish(std::optional<QPoint> inView);

  MapView& myMap;
  QLabel* lblHint;  // the map owns it
  std::function<void(QPointF)> myChosen;
};

// A place in whole units, as the status bar shows it.
QPointF WholePlace(QPointF place);

}  // namespace corvane::map
