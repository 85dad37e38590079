#include "map/picture_preview.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QGraphicsPixmapItem>
#include <QImage>
#include <QMouseEvent>
#include <QWheelEvent>

#include "map/grid.h"

namespace corvane::map {
namespace {

// Of the picture in memory, in its pixels; a click is as exact as the picture shrunk to this.
constexpr double kPreviewSide = 2048;
constexpr double kPreviewZoom = 1.3;
constexpr int kPlaceRadius = 9;

// Lines with their coordinates. The painter maps units into the window.
void DrawCoordinates(QPainter& painter, const QRectF& part) {
  const QTransform toView = painter.worldTransform();
  const double step = GridStep(toView.m11());
  const QRectF window = toView.mapRect(part);
  const int height = painter.fontMetrics().height();
  painter.resetTransform();
  painter.setPen(QColor(0, 0, 0, 150));
  const auto text = [](double place) { return QString::number(place, 'f', 0); };
  for (double x = std::ceil(part.left() / step) * step; x <= part.right(); x += step) {
    const double at = std::round(toView.map(QPointF(x, 0)).x());
    painter.drawLine(QPointF(at, window.top()), QPointF(at, window.bottom()));
    painter.drawText(QPointF(at + 3, window.bottom() - 4), text(x));
  }
  for (double y = std::ceil(part.top() / step) * step; y <= part.bottom(); y += step) {
    const double at = std::round(toView.map(QPointF(0, y)).y());
    painter.drawLine(QPointF(window.left(), at), QPointF(window.right(), at));
    if (at < window.bottom() - 2 * height)
      painter.drawText(QPointF(window.left() + 3, at - 3), text(y));
  }
}

QPixmap Compose(const TilePyramid& pyramid, double scale) {
  const QRectF bounds = pyramid.Bounds();
  QImage image((bounds.size() * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.scale(scale, scale);
  painter.translate(-bounds.topLeft());
  for (const TileId& id : pyramid.TilesAt(pyramid.LevelFor(scale), bounds))
    painter.drawImage(pyramid.PlaceOf(id), QImage(pyramid.FileOf(id)));
  painter.end();
  return QPixmap::fromImage(image);
}

}  // namespace

PicturePreview::PicturePreview(QWidget* parent) : QGraphicsView(parent) {
  setScene(&myScene);
  setObjectName(QStringLiteral("preview"));
  setAccessibleName(tr("Preview of the picture"));
  setDragMode(ScrollHandDrag);
  setTransformationAnchor(AnchorUnderMouse);
  setViewportUpdateMode(FullViewportUpdate);
  // The black grid is visible on it in light and dark.
  setBackgroundBrush(QColor(0xa8, 0xb0, 0xb8));
  viewport()->setCursor(Qt::CrossCursor);
}

void PicturePreview::Show(const std::optional<TilePyramid>& pyramid) {
  myScene.clear();
  myMarked = {};
  myGrid.reset();
  myIsZoomed = false;
  myScene.setSceneRect({});
  if (!pyramid) return;
  const QRectF bounds = pyramid->Bounds();
  const double scale = std::min(1.0, kPreviewSide / std::max(bounds.width(), bounds.height()));
  QGraphicsPixmapItem* item = myScene.addPixmap(Compose(*pyramid, scale));
  item->setTransformationMode(Qt::SmoothTransformation);
  item->setScale(1 / scale);
  item->setPos(bounds.topLeft());
  myScene.setSceneRect(bounds);
  Fit();
}

double PicturePreview::Side() const {
  return std::max(myScene.sceneRect().width(), myScene.sceneRect().height());
}

void PicturePreview::Mark(std::size_t number, std::optional<QPointF> pixel) {
  myMarked.at(number) = pixel;
  viewport()->update();
}

void PicturePreview::ShowGrid(QPointF corner, double unitsPerPixel) {
  myGrid = QTransform::fromScale(1 / unitsPerPixel, 1 / unitsPerPixel)
               .translate(-corner.x(), -corner.y());
  viewport()->update();
}

void PicturePreview::Fit() {
  if (!myIsZoomed) fitInView(myScene.sceneRect(), Qt::KeepAspectRatio);
}

void PicturePreview::drawForeground(QPainter* painter, const QRectF& part) {
  if (myScene.items().isEmpty()) return;
  painter->save();
  const QTransform toView = painter->worldTransform();
  if (myGrid) {
    painter->setWorldTransform(*myGrid * toView);
    DrawCoordinates(*painter, myGrid->inverted().mapRect(part));
  }
  painter->resetTransform();
  painter->setRenderHint(QPainter::Antialiasing);
  for (std::size_t i = 0; i < kPlaces; ++i) {
    if (!myMarked.at(i)) continue;
    const QPointF at = toView.map(*myMarked.at(i));
    painter->setPen(QPen(Qt::black, 1));
    painter->setBrush(Qt::white);
    // A balloon beside the place, which a cross marks exactly.
    painter->drawEllipse(at - QPointF(0, 2.5 * kPlaceRadius), kPlaceRadius, kPlaceRadius);
    painter->drawText(QRectF(at.x() - kPlaceRadius, at.y() - 3.5 * kPlaceRadius, 2 * kPlaceRadius,
                             2 * kPlaceRadius),
                      Qt::AlignCenter, QString::number(i + 1));
    for (const auto& [colour, width] : {std::pair(Qt::white, 4), std::pair(Qt::red, 2)}) {
      painter->setPen(QPen(colour, width));
      painter->drawLine(at - QPointF(kPlaceRadius, 0), at + QPointF(kPlaceRadius, 0));
      painter->drawLine(at - QPointF(0, kPlaceRadius), at + QPointF(0, kPlaceRadius));
    }
  }
  painter->restore();
}

void PicturePreview::wheelEvent(QWheelEvent* event) {
  const double factor = std::pow(kPreviewZoom, event->angleDelta().y() / 120.0);
  const double pixels = transform().m11() * factor;
  // From a quarter of the window to 16 screen pixels for one of the picture.
  if (pixels > 16 || pixels * Side() < width() / 4.0) return;
  myIsZoomed = true;
  scale(factor, factor);
}

void PicturePreview::mousePressEvent(QMouseEvent* event) {
  myPressed = event->pos();
  QGraphicsView::mousePressEvent(event);
}

void PicturePreview::mouseReleaseEvent(QMouseEvent* event) {
  QGraphicsView::mouseReleaseEvent(event);
  viewport()->setCursor(Qt::CrossCursor);
  const bool isClick =
      event->button() == Qt::LeftButton &&
      (event->pos() - myPressed).manhattanLength() < QApplication::startDragDistance();
  const QPointF pixel = mapToScene(event->pos());
  if (isClick && Clicked && myScene.sceneRect().contains(pixel)) Clicked(pixel);
}

void PicturePreview::resizeEvent(QResizeEvent* event) {
  QGraphicsView::resizeEvent(event);
  Fit();
}

}  // namespace corvane::map
