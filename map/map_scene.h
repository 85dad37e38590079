#pragma once

#include <memory>
#include <optional>

#include <QGraphicsScene>

#include "map/markers_item.h"
#include "map/pictures/map_picture.h"
#include "map/pictures/tile_store.h"

namespace corvane::map {

// One facet of the map, in the players' own coordinates: its picture, or a grid, and the markers.
class MapScene : public QGraphicsScene {
 public:
  // Borrows what it shows.
  MapScene(MarkerBoard& board, const Highlights& highlights, int facet);

  // Shows the tiles in that folder where the picture lies; whether there are any.
  bool ShowPicture(const MapPicture& picture, const QString& tileFolder);
  // Shows the grid.
  void ShowGrid();

  MarkersItem& Markers() { return *myMarkers; }
  int Facet() const { return myFacet; }
  // Of the picture; null where there is none.
  QRectF PictureBounds() const;
  // What was asked for and has not come is of no use any more: another part is shown.
  void ForgetTileRequests();

 protected:
  void drawBackground(QPainter* painter, const QRectF& part) override;

 private:
  void Redraw();
  void DrawTiles(QPainter& painter, const QRectF& part);
  bool DrawTile(QPainter& painter, const QTransform& toView, const TileId& id);
  QRectF ToMap(const QRectF& pixels) const;

  int myFacet;
  MarkersItem* myMarkers;  // the scene owns it
  MapPicture myPicture;
  std::unique_ptr<TileStore> myTiles;
};

}  // namespace corvane::map
