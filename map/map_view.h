#pragma once

#include <functional>
#include <optional>
#include <string>

#include <QGraphicsView>
#include <QRubberBand>
#include <QTimer>

#include "map/map_scene.h"

namespace corvane::map {

// The window's part that shows a facet: moves and scales it by mouse and keys, follows a member,
// and paints at most thirty times a second while somebody moves.
class MapView : public QGraphicsView {
 public:
  // Borrows the board and the highlights.
  MapView(MarkerBoard& board, Highlights& highlights, QWidget* parent);

  std::function<void(const client::Member&)> MemberClicked;
  // A click that met nobody.
  std::function<void(QPointF place)> PlaceClicked;
  // The pointer is over that place, where it or the map was moved; over none once it has left.
  std::function<void(std::optional<QPointF> place)> PointerMoved;
  // The member that is followed is on another facet now.
  std::function<void(int facet)> FacetRequested;
  // Following has begun or ended.
  std::function<void()> FollowChanged;
  // Asked before an arrow key moves the map; whether it was used for something else.
  std::function<bool(int columns, int rows)> ArrowPressed;

  void ShowScene(MapScene& scene);
  MapScene* Scene() const { return static_cast<MapScene*>(scene()); }

  void ZoomIn() { Zoom(kZoomStep, rect().center()); }
  void ZoomOut() { Zoom(1 / kZoomStep, rect().center()); }
  // Shows everybody on the facet; where nobody is, its picture.
  void ShowAll();
  void CentreOn(const client::Member& member);

  // Keeps the member in the middle, by its name: also after it went and came back.
  void Follow(const client::Member& member);
  void StopFollowing();
  bool IsFollowing() const { return !myFollowed.empty(); }

  // Takes what has changed on the board into the picture, now.
  void Advance(client::Clock::time_point now);
  // The highlights have changed.
  void Refresh();

 protected:
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  static constexpr double kZoomStep = 1.3;

  void Zoom(double factor, QPoint at);
  void ShowRect(const QRectF& part);
  void Pan(QPoint by);
  void ViewMoved();
  void KeepFollowing();
  void ReportPointer() const;

  MarkerBoard& myBoard;
  Highlights& myHighlights;
  std::string myFollowed;
  QTimer myFrames;
  QTimer myLabels;
  QRubberBand myBand;
  std::optional<QPoint> myPointer;
  std::optional<QPoint> myDragFrom;
  QPoint myPressed;
  bool myIsDrag = false;
  bool myIsBand = false;
  bool myShowsAllNext = false;  // as soon as the window has its size
};

}  // namespace corvane::map
