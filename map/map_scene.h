#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QGraphicsScene>

#include "map/markers_item.h"
#include "map/pictures/map_picture.h"
#include "map/pictures/tile_store.h"

namespace corvane::map {

// A facet of the map in the players' coordinates: the markers above a picture or a grid. Loads the
// picture's tiles as views paint them.
class MapScene : public QGraphicsScene {
 public:
  // Borrows the board and the highlights.
  MapScene(MarkerBoard& board, const Highlights& highlights, int facet);

  // Shows the folder's tiles at the picture's position. Without tiles, shows the grid and returns
  // false.
  bool ShowPicture(const MapPicture& picture, const QString& tileFolder);
  void ShowGrid();

  // Draws on the picture or the grid, below all items. Views cache what it draws.
  std::function<void(QPainter& painter, const QRectF& part)> BackgroundDrawn;

  MarkersItem& Markers() { return *myMarkers; }
  int Facet() const { return myFacet; }
  // In map units; null without a picture.
  QRectF PictureBounds() const;
  // Cancels the requested tiles. Called when the view shows another part.
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
