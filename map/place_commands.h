#pragma once

#include <vector>

#include <QCoreApplication>
#include <QMainWindow>
#include <QMenu>
#include <QPointF>

#include "map/coordinates.h"
#include "map/map_actions.h"
#include "map/map_view.h"

namespace corvane::map {

// What the user does with places of the map: goes to typed coordinates, copies coordinates, opens
// the menu of a place, lists who stands there. Borrows all that it is given.
class PlaceCommands {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PlaceCommands)

 public:
  PlaceCommands(MarkerBoard& board, MapView& map, MapActions& actions, QMainWindow& owner);

  // Asks for coordinates and shows them in the middle of the map.
  void Ask();
  // Opens the menu of a place beside all markers.
  void OpenMenu(QPointF place, QPoint globalPosition);
  // The place that the menu was last opened for.
  QPointF MenuPlace() const { return myMenuPlace; }
  // Lists members that stand in one place; a click on a name selects it.
  void ListCrowd(const std::vector<const client::Member*>& members, QPoint globalPosition);
  // Copies "x, y, facet".
  static void Copy(QPoint place, int facet);

 private:
  MarkerBoard& myBoard;
  MapView& myMap;
  MapActions& myActions;
  QMainWindow& myOwner;
  QPointF myMenuPlace;
};

}  // namespace corvane::map
