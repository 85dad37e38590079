#include "map/map_scene.h"

#include <cmath>
#include <utility>

#include <QApplication>
#include <QGraphicsView>
#include <QPainter>
#include <QPalette>

#include "map/grid.h"

namespace corvane::map {

MapScene::MapScene(MarkerBoard& board, const Highlights& highlights, int facet)
    : myFacet(facet), myMarkers(new MarkersItem(board, highlights, facet)) {
  setItemIndexMethod(NoIndex);
  setSceneRect(myMarkers->boundingRect());
  addItem(myMarkers);
}

bool MapScene::ShowPicture(const MapPicture& picture, const QString& tileFolder) {
  std::optional<TilePyramid> pyramid = TilePyramid::Open(tileFolder);
  if (!pyramid) {
    ShowGrid();
    return false;
  }
  myPicture = picture;
  myTiles = std::make_unique<TileStore>(*std::move(pyramid));
  myTiles->TileLoaded = [this](const TileId& id) {
    invalidate(ToMap(myTiles->Pyramid().PlaceOf(id)), BackgroundLayer);
  };
  Redraw();
  return true;
}

void MapScene::ShowGrid() {
  myTiles.reset();
  myPicture = {};
  Redraw();
}

// Views cache the background.
void MapScene::Redraw() {
  for (QGraphicsView* view : views()) {
    view->resetCachedContent();
    view->viewport()->update();
  }
}

QRectF MapScene::PictureBounds() const {
  return myTiles ? ToMap(myTiles->Pyramid().Bounds()) : QRectF();
}

void MapScene::ForgetTileRequests() {
  if (myTiles) myTiles->ForgetRequests();
}

void MapScene::drawBackground(QPainter* painter, const QRectF& part) {
  painter->fillRect(part, GroundColour(QApplication::palette()));
  if (myTiles) {
    DrawTiles(*painter, part);
  } else {
    DrawGrid(*painter, part, QApplication::palette());
  }
  if (BackgroundDrawn) BackgroundDrawn(*painter, part);
}

void MapScene::DrawTiles(QPainter& painter, const QRectF& part) {
  const TilePyramid& pyramid = myTiles->Pyramid();
  const double units = myPicture.unitsPerPixel;
  const QTransform toView = painter.worldTransform();
  const double ratio = painter.device()->devicePixelRatioF();
  const int level = pyramid.LevelFor(toView.m11() * units * ratio);
  const QRectF pixels((part.topLeft() - myPicture.corner) / units, part.size() / units);
  painter.save();
  painter.resetTransform();
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  for (const TileId& id : pyramid.TilesAt(level, pixels)) {
    if (DrawTile(painter, toView, id)) continue;
    // Until the tile is loaded, draw its part of the nearest coarser tile in memory.
    for (int up = 1; id.level - up >= pyramid.CoarsestLevel(); ++up) {
      const TileId coarser{id.level - up, id.column >> up, id.row >> up};
      const QPixmap* tile = myTiles->Peek(coarser);
      if (tile == nullptr || tile->isNull()) continue;
      const double side = tile->width() / static_cast<double>(1 << up);
      const int mask = (1 << up) - 1;
      const QRectF source((id.column & mask) * side, (id.row & mask) * side, side, side);
      painter.drawPixmap(toView.mapRect(ToMap(pyramid.PlaceOf(id))), *tile, source);
      break;
    }
  }
  painter.restore();
}

// Rounds the edges to whole screen pixels, so no seam shows between tiles.
bool MapScene::DrawTile(QPainter& painter, const QTransform& toView, const TileId& id) {
  const QPixmap* tile = myTiles->Find(id);
  if (tile == nullptr) return false;
  if (tile->isNull()) return true;
  const double ratio = painter.device()->devicePixelRatioF();
  const QRectF place = toView.mapRect(ToMap(myTiles->Pyramid().PlaceOf(id)));
  const auto whole = [ratio](double edge) { return std::round(edge * ratio) / ratio; };
  painter.drawPixmap(QRectF(QPointF(whole(place.left()), whole(place.top())),
                            QPointF(whole(place.right()), whole(place.bottom()))),
                     *tile, tile->rect());
  return true;
}

QRectF MapScene::ToMap(const QRectF& pixels) const {
  return {pixels.topLeft() * myPicture.unitsPerPixel + myPicture.corner,
          pixels.size() * myPicture.unitsPerPixel};
}

}  // namespace corvane::map
