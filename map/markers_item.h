#pragma once

#include <functional>
#include <optional>

#include <QGraphicsItem>

#include "map/marker_art.h"
#include "map/marker_board.h"

namespace corvane::map {

// Which markers stand out, and the marker of one's own.
struct Highlights {
  const client::Member* selected = nullptr;
  const client::Member* followed = nullptr;
  std::optional<client::Report> own;

  bool Contains(const client::Member* member) const {
    return member == selected || member == followed;
  }
};

// All markers of one facet as one item of the scene: with an item a member, moving a thousand of
// them costs more than drawing them does. Markers and names keep their size at every scale.
class MarkersItem : public QGraphicsItem {
 public:
  // Borrows both.
  MarkersItem(MarkerBoard& board, const Highlights& highlights, int facet);

  QRectF boundingRect() const override;
  void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

  // The names are placed anew at the next painting.
  void PlaceLabels() { myPlacesLabels = true; }

  // The one that is drawn topmost there; null where none is. `toView` maps the map into the window.
  const client::Member* MemberAt(QPointF inView, const QTransform& toView) const;

 private:
  struct Shown {
    Marker* marker;
    QPointF at;  // in the window
  };

  std::vector<Shown> Visible(const QTransform& toView, const QRectF& window) const;
  void ChooseLabels(const std::vector<Shown>& visible, const QRect& window);
  void DrawTrails(QPainter& painter, const QTransform& toView) const;
  void DrawLabel(QPainter& painter, const Shown& shown) const;
  static void LayOut(Marker& marker, const QFont& font);

  MarkerBoard& myBoard;
  const Highlights& myHighlights;
  int myFacet;
  MarkerArt myArt;
  bool myPlacesLabels = true;
  QFont myFont;
};

}  // namespace corvane::map
