#pragma once

#include <array>
#include <functional>
#include <optional>

#include <QCoreApplication>
#include <QGraphicsView>
#include <QPixmap>

#include "map/pictures/map_picture.h"
#include "map/pictures/tile_pyramid.h"

namespace corvane::map {

// Shows a picture with the map's grid over it and two numbered places. The wheel zooms, dragging
// pans, a click chooses a place.
class PicturePreview : public QGraphicsView {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PicturePreview)

 public:
  static constexpr std::size_t kPlaces = 2;

  explicit PicturePreview(QWidget* parent);

  // In pixels of the picture.
  std::function<void(QPointF pixel)> Clicked;

  // Shows the tiles, without a grid or places; none shows nothing.
  void Show(const std::optional<TilePyramid>& pyramid);
  // The size of the picture's longer side, in its pixels.
  double Side() const;
  void Mark(std::size_t number, std::optional<QPointF> pixel);
  std::optional<QPointF> Marked(std::size_t number) const { return myMarked.at(number); }
  // Draws the grid of a picture in that position.
  void ShowGrid(QPointF corner, double unitsPerPixel);

 protected:
  void drawForeground(QPainter* painter, const QRectF& part) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void Fit();

  QGraphicsScene myScene;
  std::array<std::optional<QPointF>, kPlaces> myMarked;
  std::optional<QTransform> myGrid;  // from map units to pixels
  QPoint myPressed;
  bool myIsZoomed = false;
};

}  // namespace corvane::map
