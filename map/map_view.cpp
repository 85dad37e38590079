#include "map/map_view.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include <QApplication>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QShortcut>
#include <QToolTip>
#include <QWheelEvent>

#include "map/crowds.h"

namespace corvane::map {
namespace {

using client::Clock;
using client::Member;

constexpr std::chrono::milliseconds kFrame{33};
// Of the map that the window shows at the smallest scale, in map units, even if less is there.
constexpr double kMinSpan = 20'000;
constexpr double kMaxScale = 32;
constexpr int kArrowPixels = 60;

}  // namespace

MapView::MapView(MarkerBoard& board, Highlights& highlights, QWidget* parent)
    : QGraphicsView(parent),
      myBoard(board),
      myHighlights(highlights),
      myEdges(*this),
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
  // Not all systems send a context menu event for this key.
  auto* menu = new QShortcut(Qt::SHIFT | Qt::Key_F10, this);
  menu->setContext(Qt::WidgetShortcut);
  connect(menu, &QShortcut::activated, this, [this] { OpenMenuAt(MenuPoint()); });

  connect(&myFrames, &QTimer::timeout, this, [this] { Advance(Now()); });
  myFrames.start(kFrame);
}

void MapView::ShowScene(MapScene& scene) {
  if (&scene == this->scene()) return;
  setScene(&scene);
  myTarget.reset();
  ViewMoved();
}

void MapView::PlaceButtons(QWidget& buttons) {
  myEdges.SetButtons(buttons);
  QWidget* before = this;
  for (QWidget* next : buttons.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
    setTabOrder(before, next);
    before = next;
  }
}

void MapView::LayOutEdges() {
  const int thickness = myEdges.Thickness();
  setViewportMargins(thickness, 0, 0, thickness);
  myEdges.LayOut();
}

// Everything on the facet takes half of the window at the smallest scale.
double MapView::MinScale() const {
  const QRectF all = myBoard.Extent(Scene()->Facet()) | Scene()->PictureBounds();
  const double span = std::max({2 * all.width(), 2 * all.height(), kMinSpan});
  return std::min(viewport()->width(), viewport()->height()) / span;
}

void MapView::Zoom(double factor, QPoint at) {
  const double scale = transform().m11();
  // The smallest scale may have grown since.
  factor = std::clamp(scale * factor, std::min(scale, MinScale()), kMaxScale) / scale;
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
  myEdges.Update();
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
  if (myHighlights.own && myHighlights.own->facet == Scene()->Facet())
    part |= QRectF(myHighlights.own->x - 0.5, myHighlights.own->y - 0.5, 1, 1);
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
  const double scale = std::min(
      {viewport()->width() / part.width(), viewport()->height() / part.height(), kMaxScale});
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

void MapView::ShowMe() {
  if (!myHighlights.own) return;
  StopFollowing();
  CentreOn(QPointF(myHighlights.own->x, myHighlights.own->y), myHighlights.own->facet);
}

void MapView::ShowPlace(QPointF place, int facet) {
  StopFollowing();
  CentreOn(place, facet);
  myTarget = place;
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
    myHighlights.followed = myBoard.MemberNamed(myFollowed);
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
  if (Scene() == nullptr) return;
  if (myBoard.Advance(now, Scene()->Facet())) myFramesLeft = MarkersItem::kTurns;
  if (myFramesLeft == 0) return;
  KeepFollowing();
  if (isVisible()) viewport()->update();
}

void MapView::Refresh() {
  if (Scene() != nullptr) Scene()->Markers().PlaceLabels();
  myFramesLeft = MarkersItem::kTurns;
  viewport()->update();
}

void MapView::wheelEvent(QWheelEvent* event) {
  StopFollowing();
  Zoom(std::pow(kZoomStep, event->angleDelta().y() / 120.0), event->position().toPoint());
  event->accept();
}

void MapView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  if (std::exchange(myTarget, std::nullopt)) viewport()->update();
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
  const QPoint at = event->pos();
  if (const Member* member = Scene()->Markers().MemberAt(at, *this)) {
    if (MemberClicked) MemberClicked(*member);
  } else if (const auto crowd = Scene()->Markers().CrowdAt(at, *this); !crowd.empty()) {
    OpenCrowd(crowd, at);
  } else if (PlaceClicked) {
    PlaceClicked(mapToScene(at));
  }
}

// Zooms in until the crowd separates, or lists its members if it never does.
void MapView::OpenCrowd(const std::vector<const Member*>& members, QPoint at) {
  QRectF part;
  for (const Member* member : members)
    part |= QRectF(myBoard.Find(member)->place - QPointF(0.5, 0.5), QSizeF(1, 1));
  const double spread = std::max(part.width(), part.height()) - 1;
  if (spread * kMaxScale <= 2 * kCrowdRadius || transform().m11() >= kMaxScale) {
    if (CrowdRequested) CrowdRequested(members, viewport()->mapToGlobal(at));
    return;
  }
  StopFollowing();
  const double margin = spread / 4;
  ShowRect(part.adjusted(-margin, -margin, margin, margin));
}

void MapView::contextMenuEvent(QContextMenuEvent* event) {
  const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
  OpenMenuAt(isByKey ? MenuPoint() : event->pos());
}

// Of a menu opened by a key: the selected marker, or the middle if it is not to be seen.
QPoint MapView::MenuPoint() const {
  const QRect window = viewport()->rect();
  const Marker* selected = myBoard.Find(myHighlights.selected);
  if (selected == nullptr || selected->facet != Scene()->Facet()) return window.center();
  const QPoint at = mapFromScene(selected->place);
  return window.contains(at) ? at : window.center();
}

void MapView::OpenMenuAt(QPoint at) {
  const QPoint onScreen = viewport()->mapToGlobal(at);
  if (const Member* member = Scene()->Markers().MemberAt(at, *this)) {
    if (MemberMenuRequested) MemberMenuRequested(*member, onScreen);
  } else if (const auto crowd = Scene()->Markers().CrowdAt(at, *this); !crowd.empty()) {
    if (CrowdRequested) CrowdRequested(crowd, onScreen);
  } else if (PlaceMenuRequested) {
    PlaceMenuRequested(mapToScene(at), onScreen);
  }
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

void MapView::resizeEvent(QResizeEvent* event) {
  QGraphicsView::resizeEvent(event);
  LayOutEdges();
  Refresh();
}

void MapView::scrollContentsBy(int columns, int rows) {
  QGraphicsView::scrollContentsBy(columns, rows);
  myEdges.Update();
}

bool MapView::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip || Scene() == nullptr)
    return QGraphicsView::viewportEvent(event);
  const auto& help = static_cast<QHelpEvent&>(*event);
  QString tip = Scene()->Markers().TipAt(help.pos(), *this).toHtmlEscaped();
  // Names are strangers' text, which must not be read as HTML.
  if (!tip.isEmpty()) tip = QStringLiteral("<p style=\"white-space:pre\">%1</p>").arg(tip);
  QToolTip::showText(help.globalPos(), tip, viewport(),
                     QRect(help.pos() - QPoint(4, 4), QSize(9, 9)));
  return true;
}

// The frame of the keyboard focus, and the place that ShowPlace has shown.
void MapView::drawForeground(QPainter* painter, const QRectF&) {
  if (myFramesLeft > 0) --myFramesLeft;
  painter->resetTransform();
  painter->setBrush(Qt::NoBrush);
  if (myTarget) {
    const QPoint at = mapFromScene(*myTarget);
    for (const QPen& pen : {QPen(Qt::white, 5), QPen(Qt::black, 2)}) {
      painter->setPen(pen);
      for (const QPoint& to : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)})
        painter->drawLine(at + to * 5, at + to * 16);
    }
  }
  if (!hasFocus()) return;
  const QRect window = viewport()->rect();
  painter->setPen(QPen(palette().color(QPalette::Base), 1));
  painter->drawRect(window.adjusted(2, 2, -3, -3));
  painter->setPen(QPen(palette().color(QPalette::Highlight), 2));
  painter->drawRect(window.adjusted(1, 1, -1, -1));
}

bool MapView::event(QEvent* event) {
  const bool isTaken = QGraphicsView::event(event);
  const QEvent::Type type = event->type();
  if (type == QEvent::FocusIn || type == QEvent::FocusOut) viewport()->update();
  // The cached background has the old colours.
  if (type == QEvent::PaletteChange) resetCachedContent();
  if (type == QEvent::FontChange) LayOutEdges();
  return isTaken;
}

}  // namespace corvane::map
