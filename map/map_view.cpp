#include "map/map_view.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include "framework/text.h"

namespace corvane::map {
namespace {

using client::Clock;
using client::Member;

constexpr std::chrono::milliseconds kFrame{33};
constexpr std::chrono::milliseconds kLabelPause{500};
constexpr double kMinScale = 1e-5;
constexpr double kMaxScale = 32;
constexpr int kArrowPixels = 60;

}  // namespace

MapView::MapView(MarkerBoard& board, Highlights& highlights, QWidget* parent)
    : QGraphicsView(parent),
      myBoard(board),
      myHighlights(highlights),
      myBand(QRubberBand::Rectangle, viewport()) {
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setTransformationAnchor(NoAnchor);
  setResizeAnchor(AnchorViewCenter);
  // The background is drawn once for each position and scale.
  setCacheMode(CacheBackground);
  setViewportUpdateMode(FullViewportUpdate);
  setOptimizationFlags(DontSavePainterState | DontAdjustForAntialiasing);
  setFrameShape(NoFrame);
  // The scene's items take no input.
  setInteractive(false);
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  viewport()->setCursor(Qt::CrossCursor);

  connect(&myFrames, &QTimer::timeout, this, [this] { Advance(Now()); });
  myFrames.start(kFrame);
  connect(&myLabels, &QTimer::timeout, this, [this] {
    if (Scene() != nullptr) Scene()->Markers().PlaceLabels();
  });
  myLabels.start(kLabelPause);
}

void MapView::ShowScene(MapScene& scene) {
  if (&scene == this->scene()) return;
  setScene(&scene);
  ViewMoved();
}

void MapView::Zoom(double factor, QPoint at) {
  const double scale = transform().m11();
  factor = std::clamp(scale * factor, kMinScale, kMaxScale) / scale;
  const QPointF place = mapToScene(at);
  this->scale(factor, factor);
  Pan(mapFromScene(place) - at);
}

void MapView::Pan(QPoint by) {
  horizontalScrollBar()->setValue(horizontalScrollBar()->value() + by.x());
  verticalScrollBar()->setValue(verticalScrollBar()->value() + by.y());
  ViewMoved();
}

void MapView::ViewMoved() {
  if (Scene() == nullptr) return;
  Scene()->ForgetTileRequests();
  Refresh();
  ReportPointer();
}

void MapView::ReportPointer() const {
  if (myPointer && PointerMoved) PointerMoved(mapToScene(*myPointer));
}

void MapView::ShowAll() {
  StopFollowing();
  myShowsAllNext = !isVisible();
  if (myShowsAllNext) return;
  QRectF part = myBoard.Extent(Scene()->Facet());
  if (part.isNull()) {
    part = Scene()->PictureBounds();
  } else {
    // Room for the labels at the edge.
    const double margin = 20 + 0.08 * std::max(part.width(), part.height());
    part.adjust(-margin, -margin, margin, margin);
  }
  if (!part.isNull()) ShowRect(part);
}

void MapView::ShowRect(const QRectF& part) {
  const double scale =
      std::clamp(std::min(viewport()->width() / part.width(), viewport()->height() / part.height()),
                 kMinScale, kMaxScale);
  setTransform(QTransform::fromScale(scale, scale));
  centerOn(part.center());
  ViewMoved();
}

void MapView::CentreOn(const Member& member) {
  const Marker* marker = myBoard.Find(&member);
  if (marker != nullptr) CentreOn(marker->place, marker->facet);
}

void MapView::CentreOn(QPointF place, int facet) {
  if (facet != Scene()->Facet() && FacetRequested) FacetRequested(facet);
  centerOn(place);
  ViewMoved();
}

void MapView::Follow(const Member& member) {
  myFollowed = member.name;
  myHighlights.followed = &member;
  CentreOn(member);
  if (FollowChanged) FollowChanged();
}

void MapView::StopFollowing() {
  if (!IsFollowing()) return;
  myFollowed.clear();
  myHighlights.followed = nullptr;
  viewport()->update();
  if (FollowChanged) FollowChanged();
}

void MapView::KeepFollowing() {
  if (!IsFollowing()) return;
  if (myHighlights.followed == nullptr) {
    for (const Marker* marker : myBoard.All()) {
      if (SameText(marker->member->name, myFollowed)) myHighlights.followed = marker->member;
    }
    if (myHighlights.followed != nullptr && FollowChanged) FollowChanged();
  }
  const Marker* marker = myBoard.Find(myHighlights.followed);
  if (marker == nullptr) return;
  if (marker->facet != Scene()->Facet() && FacetRequested) FacetRequested(marker->facet);
  if (mapFromScene(marker->place) == viewport()->rect().center()) return;
  centerOn(marker->place);
  ReportPointer();
}

void MapView::Advance(Clock::time_point now) {
  if (Scene() == nullptr || !myBoard.Advance(now, Scene()->Facet())) return;
  KeepFollowing();
  if (isVisible()) viewport()->update();
}

void MapView::Refresh() {
  if (Scene() != nullptr) Scene()->Markers().PlaceLabels();
  viewport()->update();
}

void MapView::wheelEvent(QWheelEvent* event) {
  StopFollowing();
  Zoom(std::pow(kZoomStep, event->angleDelta().y() / 120.0), event->position().toPoint());
  event->accept();
}

void MapView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  myPressed = event->pos();
  myDragFrom = event->pos();
  myIsDrag = false;
  myIsBand = event->modifiers().testFlag(Qt::ShiftModifier);
}

void MapView::mouseMoveEvent(QMouseEvent* event) {
  myPointer = event->pos();
  ReportPointer();
  if (!myDragFrom) return;
  if (!myIsDrag && (event->pos() - myPressed).manhattanLength() < QApplication::startDragDistance())
    return;
  myIsDrag = true;
  if (myIsBand) {
    myBand.setGeometry(QRect(myPressed, event->pos()).normalized());
    myBand.show();
    return;
  }
  StopFollowing();
  viewport()->setCursor(Qt::ClosedHandCursor);
  Pan(*myDragFrom - event->pos());
  myDragFrom = event->pos();
}

void MapView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !std::exchange(myDragFrom, std::nullopt)) return;
  viewport()->setCursor(Qt::CrossCursor);
  myBand.hide();
  if (myIsDrag) {
    const QRect box = QRect(myPressed, event->pos()).normalized();
    if (!myIsBand || box.width() < 4 || box.height() < 4) return;
    StopFollowing();
    ShowRect(mapToScene(box).boundingRect());
    return;
  }
  const Member* member = Scene()->Markers().MemberAt(event->pos(), viewportTransform());
  if (member != nullptr && MemberClicked) MemberClicked(*member);
  if (member == nullptr && PlaceClicked) PlaceClicked(mapToScene(event->pos()));
}

void MapView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) Zoom(2, event->pos());
}

void MapView::keyPressEvent(QKeyEvent* event) {
  const int columns = (event->key() == Qt::Key_Right) - (event->key() == Qt::Key_Left);
  const int rows = (event->key() == Qt::Key_Down) - (event->key() == Qt::Key_Up);
  if (columns == 0 && rows == 0) {
    QGraphicsView::keyPressEvent(event);
    return;
  }
  const bool pans = event->modifiers().testFlag(Qt::ControlModifier);
  if (!pans && ArrowPressed && ArrowPressed(columns, rows)) return;
  StopFollowing();
  Pan(QPoint(columns, rows) * kArrowPixels);
}

void MapView::leaveEvent(QEvent* event) {
  QGraphicsView::leaveEvent(event);
  myPointer.reset();
  if (PointerMoved) PointerMoved(std::nullopt);
}

void MapView::showEvent(QShowEvent* event) {
  QGraphicsView::showEvent(event);
  if (myShowsAllNext) ShowAll();
}

// The cached background has the old colours.
void MapView::changeEvent(QEvent* event) {
  QGraphicsView::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) resetCachedContent();
}

}  // namespace corvane::map
