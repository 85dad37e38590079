#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <QGraphicsView>
#include <QRubberBand>
#include <QTimer>

#include "map/map_edges.h"
#include "map/map_scene.h"

namespace corvane::map {

// Shows a facet, with coordinates along its left and lower edge. The user pans and zooms it by
// mouse and keys; it can follow a member. Paints at most thirty times a second, and only while a
// marker moves or the view changes.
class MapView : public QGraphicsView {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MapView)

 public:
  // Borrows the board and the highlights.
  MapView(MarkerBoard& board, Highlights& highlights, QWidget* parent);

  std::function<void(const client::Member&)> MemberClicked;
  // A click beside all markers.
  std::function<void(QPointF place)> PlaceClicked;
  std::function<void(const client::Member&, QPoint globalPosition)> MemberMenuRequested;
  std::function<void(QPointF place, QPoint globalPosition)> PlaceMenuRequested;
  // The members of a crowd that stands too close to separate, or that was clicked for a menu.
  std::function<void(const std::vector<const client::Member*>&, QPoint globalPosition)>
      CrowdRequested;
  // The place under the pointer has changed; none after the pointer has left.
  std::function<void(std::optional<QPointF> place)> PointerMoved;
  // The view has to show a member that is on that facet; show the facet's scene.
  std::function<void(int facet)> FacetRequested;
  // IsFollowing() may have changed.
  std::function<void()> FollowChanged;
  // The time of the members' news and motion. A replay has its own.
  std::function<client::Clock::time_point()> Now = &client::Clock::now;
  // Called before an arrow key pans. The view pans only if it returns false.
  std::function<bool(int columns, int rows)> ArrowPressed;

  void ShowScene(MapScene& scene);
  MapScene* Scene() const { return static_cast<MapScene*>(scene()); }

  // Keeps the widget, a child of the viewport, in the lower right corner. The tab key reaches its
  // children after the map.
  void PlaceButtons(QWidget& buttons);

  void ZoomIn() { Zoom(kZoomStep, viewport()->rect().center()); }
  void ZoomOut() { Zoom(1 / kZoomStep, viewport()->rect().center()); }
  // Zooms to all markers on the facet, or to its picture if there are none.
  void ShowAll();
  void CentreOn(const client::Member& member);
  void CentreOn(QPointF place, int facet);
  // Centres the user's own marker, if there is one.
  void ShowMe();
  // Centres the place and marks it until the next click.
  void ShowPlace(QPointF place, int facet);

  // Keeps the member in the middle until StopFollowing, even if it leaves and returns: the view
  // finds it by name.
  void Follow(const client::Member& member);
  void StopFollowing();
  // Null while it follows nobody, or the followed member is away.
  const client::Member* Followed() const { return myHighlights.followed; }
  bool IsFollowing() const { return !myFollowed.empty(); }

  // Updates the markers to that time. A timer calls it too.
  void Advance(client::Clock::time_point now);
  // Called when the highlights have changed.
  void Refresh();

 protected:
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int columns, int rows) override;
  bool viewportEvent(QEvent* event) override;
  void drawForeground(QPainter* painter, const QRectF& part) override;
  void showEvent(QShowEvent* event) override;
  bool event(QEvent* event) override;

 private:
  static constexpr double kZoomStep = 1.3;

  void Zoom(double factor, QPoint at);
  void ShowRect(const QRectF& part);
  void Pan(QPoint by);
  void ViewMoved();
  void KeepFollowing();
  double MinScale() const;
  void OpenMenuAt(QPoint at);
  QPoint MenuPoint() const;
  void OpenCrowd(const std::vector<const client::Member*>& members, QPoint at);
  void LayOutEdges();
  void ReportPointer() const;

  MarkerBoard& myBoard;
  Highlights& myHighlights;
  MapEdges myEdges;
  std::string myFollowed;
  QTimer myFrames;
  QRubberBand myBand;
  std::size_t myFramesLeft = 0;  // to paint although nothing moves, until each label had its turn
  std::optional<QPointF> myTarget;  // shown by ShowPlace
  std::optional<QPoint> myPointer;
  std::optional<QPoint> myDragFrom;
  QPoint myPressed;
  bool myIsDrag = false;
  bool myIsBand = false;
  bool myShowsAllNext = false;  // when it becomes visible, with its final size
};

}  // namespace corvane::map
