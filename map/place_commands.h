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
// the menu of a place beside all markers, lists the members that stand in one place. Borrows all
// that it is given.
class PlaceCommands {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PlaceCommands)

 public:
  PlaceCommands(MarkerBoard& board, MapView& map, MapActions& actions, QMainWindow& owner);

  // Asks for coordinates and shows them in the middle of the map.
  void Ask();
  // The place that the menu was last opened for, in whole map units.
  QPointF MenuPlace() const { return myMenuPlace; }
  // Copies "x, y, facet".
  static void Copy(QPoint place, int facet);

 private:
  // A click on a name selects the member.
  void ListCrowd(const std::vector<const client::Member*>& members, QPoint globalPosition);

  MarkerBoard& myBoard;
  MapView& myMap;
  MapActions& myActions;
  QMainWindow& myOwner;
  QPointF myMenuPlace;
};

}  // namespace corvane::map
