#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QFontMetrics>
#include <QGraphicsItem>
#include <QGraphicsView>

#include "map/alarm_art.h"
#include "map/alarms/alarm_watch.h"
#include "map/label_placement.h"
#include "map/marker_art.h"
#include "map/marker_board.h"

namespace corvane::map {

// The members with a mark around their markers, and the user's own marker.
struct Highlights {
  const client::Member* selected = nullptr;
  const client::Member* followed = nullptr;
  std::optional<client::Report> own;
  const AlarmWatch* alarms = nullptr;  // whose states are marked
  std::string ownName;

  // Empty without an alarm.
  QString AlarmOf(const client::Member* member, const client::Report& report) const;

  bool Contains(const client::Member* member) const {
    return member == selected || member == followed;
  }
};

// Draws all markers of a facet with their labels and trails, and one mark for each crowd of them.
// It is one item of the scene: with an item per member, moving a thousand costs more than drawing
// them. Markers and labels keep their size at all scales. Labels keep away from visible child
// widgets of the window.
class MarkersItem : public QGraphicsItem {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MarkersItem)

 public:
  // Borrows both.
  MarkersItem(MarkerBoard& board, const Highlights& highlights, int facet);

  QRectF boundingRect() const override;
  void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

  // Lets every label look for its best place at the next paint. Without that each does once in
  // kTurns paints, and otherwise stays where it is as long as nothing is in its way.
  void PlaceLabels() { myPlacesLabels = true; }
  static constexpr std::size_t kTurns = 16;

  // Raised at the end of each paint, with what the labels and markers have left free.
  std::function<void(QPainter& painter, LabelPlacement& placement)> Painted;

  // The topmost member near the point of the window; null if there is none.
  const client::Member* MemberAt(QPoint at, const QGraphicsView& view) const;
  // The members of the crowd at the point; empty if there is none.
  std::vector<const client::Member*> CrowdAt(QPoint at, const QGraphicsView& view) const;
  // A description of what is at the point, as plain text; empty if nothing is.
  QString TipAt(QPoint at, const QGraphicsView& view) const;

 private:
  struct Shown {
    Marker* marker;
    QPointF at;  // in the window
    QString alarm;

    QRect LabelRect() const { return marker->labelPlace.translated(at.toPoint()); }
  };
  struct Crowd {
    std::vector<Marker*> markers;
    QPointF at;
  };
  // What is visible, from the lowest to the topmost: highlighted markers are the last.
  struct Arrangement {
    std::vector<Shown> single;
    std::vector<Crowd> crowds;
  };

  Arrangement Arrange(const QTransform& toView, const QRect& window) const;
  QRect RectOf(const Crowd& crowd) const {
    return MarkerArt::CrowdRect(QFontMetrics(myFont), crowd.at, crowd.markers.size());
  }
  bool IsHighlighted(const Marker& marker) const {
    return &marker == myOwn.get() || myHighlights.Contains(marker.member);
  }
  QString TipOf(const Marker& marker) const;
  void UpdateOwn();
  // Takes the places of markers, and of the signs of alarms that find one.
  void AvoidMarkers(const Arrangement& arrangement, LabelPlacement& placement);
  // Returns what is left free.
  LabelPlacement ChooseLabels(const Arrangement& arrangement, const QWidget& window);
  void DrawTrails(QPainter& painter, const QTransform& toView) const;
  void DrawMarker(QPainter& painter, const Shown& shown);
  // The lines between labels and markers.
  static void DrawLeaders(QPainter& painter, const Arrangement& arrangement);
  static void DrawLabel(QPainter& painter, const Shown& shown);
  bool LayOut(Marker& marker);
  bool TakePlace(const Shown& shown, LabelPlacement& placement, bool mayStay);

  MarkerBoard& myBoard;
  const Highlights& myHighlights;
  int myFacet;
  MarkerArt myArt;
  AlarmArt myAlarmArt;
  client::Member myOwnMember;     // the user
  std::unique_ptr<Marker> myOwn;  // of myOwnMember; null if there is none
  bool myPlacesLabels = true;
  std::size_t myTurn = 0;
  int myLayoutsLeft = 0;  // in this paint
  QFont myFont;
  QSize myLeastLabel;  // no label is smaller
};

}  // namespace corvane::map
