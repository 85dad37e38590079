#pragma once

#include <functional>
#include <optional>

#include <QGraphicsItem>

#include "map/alarm_art.h"
#include "map/alarms/alarm_watch.h"
#include "map/label_placement.h"
#include "map/marker_art.h"
#include "map/marker_board.h"

namespace corvane::map {

// The members with a ring around their markers, and the user's own marker.
struct Highlights {
  const client::Member* selected = nullptr;
  const client::Member* followed = nullptr;
  std::optional<client::Report> own;
  const AlarmWatch* alarms = nullptr;  // whose states are marked

  // Empty without an alarm.
  QString AlarmOf(const client::Member* member, const client::Report& report) const;

  bool Contains(const client::Member* member) const {
    return member == selected || member == followed;
  }
};

// Draws all markers of a facet with their labels and trails. It is one item of the scene: with an
// item per member, moving a thousand costs more than drawing them. Markers and labels keep their
// size at all scales.
class MarkersItem : public QGraphicsItem {
 public:
  // Borrows both.
  MarkersItem(MarkerBoard& board, const Highlights& highlights, int facet);

  QRectF boundingRect() const override;
  void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

  // Places the labels again at the next paint.
  void PlaceLabels() { myPlacesLabels = true; }

  // What the labels and markers have left free, as of the last paint.
  const LabelPlacement& FreePlaces() const { return myFreePlaces; }

  // The topmost member near the point; null if there is none. `toView` maps the map into the
  // window.
  const client::Member* MemberAt(QPointF inView, const QTransform& toView) const;

 private:
  struct Shown {
    Marker* marker;
    QPointF at;  // in the window
    QString alarm;
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
  AlarmArt myAlarmArt;
  bool myPlacesLabels = true;
  LabelPlacement myFreePlaces{QRect()};
  QFont myFont;
};

}  // namespace corvane::map
