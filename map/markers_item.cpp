#include "map/markers_item.h"

#include <utility>

#include <QPainter>
#include <QWidget>

#include "map/alarms/alarm_text.h"

namespace corvane::map {
namespace {

using client::Member;

constexpr int kLabelGap = MarkerArt::kRadius + 1;
constexpr int kLabelMargin = 3;
constexpr int kDisc = 6;       // radius of a marker's shape
constexpr double kReach = 10;  // distance at which a click still hits a marker

QSize LabelSize(const Marker& marker) {
  return marker.label->size().toSize() + QSize(2 * kLabelMargin, 0);
}

QRect LabelRect(const Marker& marker, QPointF at) {
  return {at.toPoint() + marker.labelPlace, LabelSize(marker)};
}

// The part of a marker that labels must not cover.
QRect MarkerRect(QPointF at) {
  constexpr QPoint kHalf(kDisc, kDisc);
  return {at.toPoint() - kHalf, at.toPoint() + kHalf};
}

// Puts the label into the first free place: right, left, above or below. Returns false, with the
// label on the right, if all are taken.
bool TakePlace(Marker& marker, QPointF at, int gap, LabelPlacement& placement) {
  const QSize size = LabelSize(marker);
  const QPoint right(gap, -size.height() / 2);
  for (const QPoint& place :
       {right, QPoint(-gap - size.width(), -size.height() / 2),
        QPoint(-size.width() / 2, -gap - size.height()), QPoint(-size.width() / 2, gap)}) {
    marker.labelPlace = place;
    if (placement.Take(LabelRect(marker, at))) return true;
  }
  marker.labelPlace = right;
  return false;
}

}  // namespace

QString Highlights::AlarmOf(const Member* member, const client::Report& report) const {
  if (alarms == nullptr) return {};
  return StateText(alarms->StateOf(member), report, alarms->Rules());
}

MarkersItem::MarkersItem(MarkerBoard& board, const Highlights& highlights, int facet)
    : myBoard(board), myHighlights(highlights), myFacet(facet) {}

QRectF MarkersItem::boundingRect() const {
  return {-kMaxCoordinate, -kMaxCoordinate, 2 * kMaxCoordinate, 2 * kMaxCoordinate};
}

void MarkersItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget* widget) {
  if (widget == nullptr) return;
  const QTransform toView = painter->worldTransform();
  painter->resetTransform();
  if (widget->font() != myFont) {
    myFont = widget->font();
    for (Marker* marker : myBoard.All())
      marker->label.reset();
  }
  painter->setFont(myFont);
  myAlarmArt.Prepare(myFont, painter->device()->devicePixelRatioF());
  const std::vector<Shown> visible = Visible(toView, widget->rect());
  if (myPlacesLabels) ChooseLabels(visible, widget->rect());
  DrawTrails(*painter, toView);
  for (const Shown& shown : visible)
    myArt.Draw(*painter, shown.at, ShapeOf(shown.marker->member->report), shown.marker->isStale);
  for (const Shown& shown : visible)
    myAlarmArt.Draw(*painter, shown.at, shown.alarm, shown.marker->showsSign);
  for (const Shown& shown : visible) {
    if (shown.marker->showsLabel) DrawLabel(*painter, shown);
    if (myHighlights.Contains(shown.marker->member)) MarkerArt::DrawRing(*painter, shown.at);
  }
  if (myHighlights.own && myHighlights.own->facet == myFacet) {
    const QPointF place(myHighlights.own->x, myHighlights.own->y);
    myArt.Draw(*painter, toView.map(place), MarkerShape::Own, false);
    myAlarmArt.Draw(*painter, toView.map(place), myHighlights.AlarmOf(nullptr, *myHighlights.own),
                    true);
  }
}

std::vector<MarkersItem::Shown> MarkersItem::Visible(const QTransform& toView,
                                                     const QRectF& window) const {
  const QRectF room = window.adjusted(-200, -40, 40, 40);
  std::vector<Shown> visible;
  for (Marker* marker : myBoard.All()) {
    if (marker->facet != myFacet) continue;
    const QPointF at = toView.map(marker->place);
    if (room.contains(at))
      visible.push_back({marker, at, myHighlights.AlarmOf(marker->member, marker->member->report)});
  }
  return visible;
}

// Highlighted members come first, and always have a label.
void MarkersItem::ChooseLabels(const std::vector<Shown>& visible, const QRect& window) {
  myPlacesLabels = false;
  LabelPlacement placement(window);
  for (const Shown& shown : visible)
    placement.Avoid(MarkerRect(shown.at));
  for (const Shown& shown : visible) {
    shown.marker->showsSign =
        !shown.alarm.isEmpty() && placement.Take(myAlarmArt.SignRect(shown.at, shown.alarm));
  }
  for (const bool isHighlighted : {true, false}) {
    for (const Shown& shown : visible) {
      if (myHighlights.Contains(shown.marker->member) != isHighlighted) continue;
      LayOut(*shown.marker, myFont);
      shown.marker->showsLabel =
          TakePlace(*shown.marker, shown.at, shown.alarm.isEmpty() ? kLabelGap : kAlarmReach,
                    placement) ||
          isHighlighted;
    }
  }
  myFreePlaces = std::move(placement);
}

void MarkersItem::DrawTrails(QPainter& painter, const QTransform& toView) const {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setBrush(Qt::NoBrush);
  for (const Marker* marker : myBoard.All()) {
    if (!marker->hasTrail || marker->facet != myFacet) continue;
    QPolygonF line;
    for (const QPointF& place : marker->trail)
      line.append(toView.map(place));
    if (!line.isEmpty()) line.back() = toView.map(marker->place);
    painter.setPen(QPen(Qt::white, 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(line);
    painter.setPen(QPen(QColor(0x5b, 0x2a, 0x86), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(line);
  }
  painter.setRenderHint(QPainter::Antialiasing, false);
}

void MarkersItem::DrawLabel(QPainter& painter, const Shown& shown) const {
  LayOut(*shown.marker, myFont);
  const QRect place = LabelRect(*shown.marker, shown.at);
  painter.fillRect(place, QColor(0, 0, 0, 160));
  painter.setPen(shown.marker->isStale ? QColor(0xc8, 0xc8, 0xc8) : QColor(Qt::white));
  painter.drawStaticText(place.topLeft() + QPoint(kLabelMargin, 0), *shown.marker->label);
}

void MarkersItem::LayOut(Marker& marker, const QFont& font) {
  if (marker.label) return;
  marker.label =
      std::make_unique<QStaticText>(marker.name + ' ' + QString::number(marker.member->report.hp));
  marker.label->setTextFormat(Qt::PlainText);
  marker.label->prepare({}, font);
}

const Member* MarkersItem::MemberAt(QPointF inView, const QTransform& toView) const {
  const Member* found = nullptr;
  for (const Marker* marker : myBoard.All()) {
    if (marker->facet != myFacet) continue;
    const QPointF distance = toView.map(marker->place) - inView;
    if (distance.manhattanLength() <= kReach) found = marker->member;
  }
  return found;
}

}  // namespace corvane::map
