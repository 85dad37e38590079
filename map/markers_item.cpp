#include "map/markers_item.h"

#include <algorithm>
#include <utility>

#include <QFontMetrics>
#include <QPainter>
#include <QWidget>

#include "framework/text.h"
#include "map/coordinates.h"
#include "map/crowds.h"
#include "map/label_placement.h"
#include "map/members_model.h"

namespace corvane::map {
namespace {

using client::Member;

constexpr int kLabelMargin = 3;
constexpr int kMaxLabelLetters = 24;
constexpr int kDisc = 6;       // radius of a marker's shape
constexpr double kReach = 10;  // distance at which a click still hits a marker
constexpr qsizetype kMaxTipNames = 20;
// In a paint. It takes up to 0.1 ms to lay out a stranger's name.
constexpr int kMaxLayouts = 100;
const QColor kLabelGround(0, 0, 0, 205);
const QColor kTrail(0x5b, 0x2a, 0x86);

int Radius(bool isHighlighted) {
  return isHighlighted ? MarkerArt::kRingRadius : MarkerArt::kRadius;
}

QRect BarRect(QPointF at, bool isHighlighted) {
  return {at.toPoint() + QPoint(-MarkerArt::kBar.width() / 2, Radius(isHighlighted)),
          MarkerArt::kBar};
}

// The part of a marker that labels must not cover.
QRect MarkerRect(QPointF at, bool isHighlighted) {
  const int half = isHighlighted ? Radius(true) : kDisc;
  const QRect mark(at.toPoint() - QPoint(half, half), at.toPoint() + QPoint(half, half));
  return mark | BarRect(at, isHighlighted);
}

// The upper left corner of a label in that direction from its marker.
QPoint LabelPlaceIn(QPoint direction, QSize size, int distance) {
  const bool isSlanted = direction.x() != 0 && direction.y() != 0;
  const int gap = isSlanted ? distance * 3 / 4 : distance;
  const auto start = [gap](int towards, int length, int after) {
    if (towards == 0) return -length / 2;
    return towards > 0 ? gap + after : -gap - length;
  };
  return {start(direction.x(), size.width(), 0),
          start(direction.y(), size.height(), isSlanted ? 0 : MarkerArt::kBar.height() + 1)};
}

// Rubber bands take no mouse events and are gone in a moment.
void AvoidChildren(const QWidget& window, LabelPlacement& placement) {
  for (const QWidget* child :
       window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
    if (child->isVisible() && !child->testAttribute(Qt::WA_TransparentForMouseEvents))
      placement.Avoid(child->geometry());
  }
}

}  // namespace

QString Highlights::AlarmOf(const Member* member, const client::Report& report) const {
  return alarms == nullptr ? QString() : alarms->TextOf(member, report);
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
  UpdateOwn();
  const QFontMetrics metrics(widget->font());
  myLeastLabel = QSize(metrics.averageCharWidth() + 2 * kLabelMargin, metrics.height());
  if (widget->font() != myFont) {
    myFont = widget->font();
    for (Marker* marker : myBoard.All())
      marker->label.reset();
    if (myOwn) myOwn->label.reset();
  }
  painter->setFont(myFont);
  myArt.Prepare(myFont, painter->device()->devicePixelRatioF());
  myAlarmArt.Prepare(myFont, painter->device()->devicePixelRatioF());
  const Arrangement arrangement = Arrange(toView, widget->rect());
  LabelPlacement placement = ChooseLabels(arrangement, *widget);
  DrawTrails(*painter, toView);
  for (const Shown& shown : arrangement.single) {
    if (!IsHighlighted(*shown.marker)) DrawMarker(*painter, shown);
  }
  for (const Crowd& crowd : arrangement.crowds)
    myArt.DrawCrowd(*painter, crowd.at, crowd.markers.size(),
                    std::ranges::all_of(crowd.markers, &Marker::isStale));
  DrawLeaders(*painter, arrangement);
  for (const Shown& shown : arrangement.single) {
    if (IsHighlighted(*shown.marker)) DrawMarker(*painter, shown);
  }
  for (const Shown& shown : arrangement.single)
    DrawLabel(*painter, shown);
  if (Painted) Painted(*painter, placement);
}

MarkersItem::Arrangement MarkersItem::Arrange(const QTransform& toView, const QRect& window) const {
  constexpr int kSpace = MarkerArt::kRingRadius;
  const QRectF room = window.adjusted(-kSpace, -kSpace, kSpace, kSpace);
  std::vector<Shown> ordinary;
  std::vector<QPointF> points;
  std::vector<Shown> alarmed;
  std::vector<Shown> highlighted;
  const auto add = [&](Marker* marker) {
    if (marker->facet != myFacet) return;
    const QPointF at = toView.map(marker->place);
    if (!room.contains(at)) return;
    const bool isOwn = marker == myOwn.get();
    const QString alarm =
        myHighlights.AlarmOf(isOwn ? nullptr : marker->member, marker->member->report);
    if (IsHighlighted(*marker)) return highlighted.push_back({marker, at, alarm});
    // A crowd hides no alarm.
    if (!alarm.isEmpty()) return alarmed.push_back({marker, at, alarm});
    ordinary.push_back({marker, at, {}});
    points.push_back(at);
  };
  for (Marker* marker : myBoard.All())
    add(marker);
  if (myOwn) add(myOwn.get());

  Arrangement arrangement;
  for (const std::vector<std::size_t>& indexes : FindCrowds(points)) {
    Crowd& crowd = arrangement.crowds.emplace_back();
    for (const std::size_t index : indexes) {
      crowd.at += points[index] / static_cast<double>(indexes.size());
      crowd.markers.push_back(std::exchange(ordinary[index].marker, nullptr));
    }
  }
  std::erase_if(ordinary, [](const Shown& shown) { return shown.marker == nullptr; });
  arrangement.single = std::move(ordinary);
  arrangement.single.insert(arrangement.single.end(), alarmed.begin(), alarmed.end());
  arrangement.single.insert(arrangement.single.end(), highlighted.begin(), highlighted.end());
  return arrangement;
}

void MarkersItem::UpdateOwn() {
  if (!myHighlights.own) return myOwn.reset();
  // Before the first login there is no name.
  const std::string name =
      myHighlights.ownName.empty() ? TextFromDisplay(tr("You")) : myHighlights.ownName;
  if (myOwn && myOwnMember.report == *myHighlights.own && myOwnMember.name == name) return;
  const std::int32_t maxHp = myOwn ? myOwn->maxHp : 0;
  myOwnMember = {name, *myHighlights.own, {}, true};
  myOwn = std::make_unique<Marker>(myOwnMember);
  myOwn->maxHp = std::max(maxHp, myOwn->hp);
}

// Highlighted members come first and may have their label above other markers, so that they have
// one wherever it fits into the window.
void MarkersItem::AvoidMarkers(const Arrangement& arrangement, LabelPlacement& placement) {
  for (const Shown& shown : arrangement.single) {
    placement.Avoid(MarkerRect(shown.at, IsHighlighted(*shown.marker)));
    if (!shown.alarm.isEmpty()) placement.Avoid(AlarmArt::OctagonRect(shown.at));
  }
  for (const Shown& shown : arrangement.single) {
    shown.marker->showsSign =
        !shown.alarm.isEmpty() && placement.Take(myAlarmArt.SignRect(shown.at, shown.alarm));
  }
  for (const Crowd& crowd : arrangement.crowds) {
    placement.Avoid(RectOf(crowd));
    for (Marker* marker : crowd.markers)
      marker->showsLabel = false;
  }
}

LabelPlacement MarkersItem::ChooseLabels(const Arrangement& arrangement, const QWidget& window) {
  const bool placesAll = std::exchange(myPlacesLabels, false);
  myTurn = (myTurn + 1) % kTurns;
  myLayoutsLeft = kMaxLayouts;
  LabelPlacement bare(window.rect());
  AvoidChildren(window, bare);
  for (const Shown& shown : arrangement.single) {
    if (IsHighlighted(*shown.marker)) bare.Avoid(MarkerRect(shown.at, true));
  }
  LabelPlacement placement = bare;
  AvoidMarkers(arrangement, placement);
  // Labels that stay come before those that look for another place.
  enum Rank { kHighlighted, kStays, kMoves, kNew, kNone };
  std::vector<Rank> ranks;
  ranks.reserve(arrangement.single.size());
  for (const Shown& shown : arrangement.single) {
    const bool isTurn = placesAll || ranks.size() % kTurns == myTurn;
    const bool showsLabel = shown.marker->showsLabel;
    ranks.push_back(!window.rect().contains(shown.at.toPoint()) ? kNone
                    : IsHighlighted(*shown.marker)              ? kHighlighted
                    : showsLabel                                ? (isTurn ? kMoves : kStays)
                                                                : (isTurn ? kNew : kNone));
    if (ranks.back() == kNone) shown.marker->showsLabel = false;
  }
  for (const Rank rank : {kHighlighted, kStays, kMoves, kNew}) {
    for (std::size_t i = 0; i < ranks.size(); ++i) {
      if (ranks[i] != rank) continue;
      const Shown& shown = arrangement.single[i];
      bool& showsLabel = shown.marker->showsLabel;
      const bool mayStay = showsLabel && !placesAll && rank != kMoves;
      showsLabel = TakePlace(shown, placement, mayStay);
      if (rank != kHighlighted) continue;
      if (!showsLabel) showsLabel = TakePlace(shown, bare, mayStay);
      if (!showsLabel) continue;
      bare.Avoid(shown.LabelRect());
      placement.Avoid(shown.LabelRect());
    }
  }
  return placement;
}

// Puts the label into the first free place around the marker, or further away with a leader line.
// Returns false if all are taken.
bool MarkersItem::TakePlace(const Shown& shown, LabelPlacement& placement, bool mayStay) {
  Marker& marker = *shown.marker;
  if (mayStay && LayOut(marker) && placement.Take(shown.LabelRect())) return true;
  constexpr int kLeader = 16;
  const int nearest = Radius(IsHighlighted(marker) || !shown.alarm.isEmpty()) + 1;
  for (const int leader : {0, kLeader, 2 * kLeader}) {
    for (const QPoint& direction : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, -1), QPoint(0, 1),
                                    QPoint(1, -1), QPoint(1, 1), QPoint(-1, -1), QPoint(-1, 1)}) {
      const int distance = nearest + leader;
      // Most places are taken: no label is laid out for those.
      const QPoint least = LabelPlaceIn(direction, myLeastLabel, distance);
      if (!placement.IsFree(QRect(shown.at.toPoint() + least, myLeastLabel))) continue;
      if (!LayOut(marker)) return false;
      marker.labelPlace.moveTopLeft(LabelPlaceIn(direction, marker.labelPlace.size(), distance));
      marker.hasLeader = leader > 0;
      if (placement.Take(shown.LabelRect())) return true;
    }
  }
  return false;
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
    for (const auto& [colour, width] : {std::pair(QColor(Qt::white), 4), std::pair(kTrail, 2)}) {
      painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
      painter.drawPolyline(line);
    }
  }
  painter.setRenderHint(QPainter::Antialiasing, false);
}

void MarkersItem::DrawMarker(QPainter& painter, const Shown& shown) {
  const Marker& marker = *shown.marker;
  const bool isOwn = &marker == myOwn.get();
  MarkerShape shape = ShapeOf(marker.member->report);
  if (isOwn) MarkerArt::DrawHalo(painter, shown.at);
  if (isOwn && shape == MarkerShape::Alive) shape = MarkerShape::Own;
  myArt.Draw(painter, shown.at, shape, marker.isStale);
  myAlarmArt.Draw(painter, shown.at, shown.alarm, marker.showsSign);
  if (marker.member == myHighlights.selected) MarkerArt::DrawRing(painter, shown.at);
  if (marker.member == myHighlights.followed) MarkerArt::DrawCorners(painter, shown.at);
  if (shape == MarkerShape::Dead || marker.maxHp <= 0) return;
  const double share = std::clamp(static_cast<double>(marker.hp) / marker.maxHp, 0.0, 1.0);
  myArt.DrawBar(painter, BarRect(shown.at, IsHighlighted(marker)).topLeft(), share, marker.isStale);
}

void MarkersItem::DrawLeaders(QPainter& painter, const Arrangement& arrangement) {
  QList<QLine> lines;
  for (const Shown& shown : arrangement.single) {
    if (!shown.marker->showsLabel || !shown.marker->hasLeader) continue;
    const QRect label = shown.LabelRect();
    const QPoint from = shown.at.toPoint();
    lines.append(QLine(from, {std::clamp(from.x(), label.left(), label.right()),
                              std::clamp(from.y(), label.top(), label.bottom())}));
  }
  for (const QPen& pen : {QPen(Qt::white, 3), QPen(Qt::black, 1)}) {
    painter.setPen(pen);
    painter.drawLines(lines);
  }
}

void MarkersItem::DrawLabel(QPainter& painter, const Shown& shown) {
  if (!shown.marker->showsLabel) return;
  const QRect place = shown.LabelRect();
  painter.fillRect(place, kLabelGround);
  painter.setPen(shown.marker->isStale ? QColor(0xd0, 0xd0, 0xd0) : QColor(Qt::white));
  painter.drawStaticText(place.topLeft() + QPoint(kLabelMargin, 0), *shown.marker->label);
}

// Returns whether there is a label. It may be old, or missing, until a later paint if this one had
// many to lay out.
bool MarkersItem::LayOut(Marker& marker) {
  if ((marker.label && !marker.isLabelOld) || myLayoutsLeft == 0) return marker.label != nullptr;
  --myLayoutsLeft;
  marker.isLabelOld = false;
  const QFontMetrics metrics(myFont);
  const int maxWidth = kMaxLabelLetters * metrics.averageCharWidth();
  QString rest = ' ' + QString::number(marker.hp);
  if (&marker == myOwn.get() && ShapeOf(myOwnMember.report) != MarkerShape::Alive)
    rest += QStringLiteral(" \u00b7 ") + MembersModel::PlainStateOf(myOwnMember);
  marker.label = std::make_unique<QStaticText>(marker.name + rest);
  marker.label->setTextFormat(Qt::PlainText);
  marker.label->prepare({}, myFont);
  if (marker.label->size().width() > maxWidth) {
    marker.label->setText(metrics.elidedText(marker.name, Qt::ElideRight, maxWidth) + rest);
    marker.label->prepare({}, myFont);
  }
  marker.labelPlace.setSize(marker.label->size().toSize() + QSize(2 * kLabelMargin, 0));
  return true;
}

const Member* MarkersItem::MemberAt(QPoint at, const QGraphicsView& view) const {
  const Member* found = nullptr;
  for (const Shown& shown : Arrange(view.viewportTransform(), view.viewport()->rect()).single) {
    if (shown.marker != myOwn.get() && (shown.at - at).manhattanLength() <= kReach)
      found = shown.marker->member;
  }
  return found;
}

std::vector<const Member*> MarkersItem::CrowdAt(QPoint at, const QGraphicsView& view) const {
  std::vector<const Member*> members;
  for (const Crowd& crowd : Arrange(view.viewportTransform(), view.viewport()->rect()).crowds) {
    if (!members.empty() || !RectOf(crowd).contains(at)) continue;
    for (const Marker* marker : crowd.markers)
      members.push_back(marker->member);
  }
  return members;
}

QString MarkersItem::TipAt(QPoint at, const QGraphicsView& view) const {
  if (const Member* member = MemberAt(at, view)) return TipOf(*myBoard.Find(member));
  QStringList lines;
  for (const Member* member : CrowdAt(at, view))
    lines.append(myBoard.Find(member)->name);
  if (lines.isEmpty()) {
    if (!myOwn || myOwn->facet != myFacet) return {};
    const QPointF own = view.viewportTransform().map(myOwn->place);
    return (own - at).manhattanLength() <= kReach ? TipOf(*myOwn) : QString();
  }
  lines.sort(Qt::CaseInsensitive);
  if (const auto more = lines.size() - kMaxTipNames; more > 0) {
    lines.resize(kMaxTipNames);
    lines.append(tr("and %1 more").arg(more));
  }
  return lines.join('\n');
}

QString MarkersItem::TipOf(const Marker& marker) const {
  const client::Report& report = marker.member->report;
  QStringList lines{marker.name,
                    tr("Hit points: %1, highest seen: %2").arg(marker.hp).arg(marker.maxHp),
                    MembersModel::PlainStateOf(*marker.member),
                    tr("%1, facet %2").arg(CoordinatesText(report.x, report.y)).arg(report.facet)};
  if (&marker == myOwn.get()) {
    lines.first() = tr("%1 (you)").arg(marker.name);
  } else {
    lines.append(tr("Last news: %1").arg(MembersModel::NewsOf(*marker.member)));
  }
  return lines.join('\n');
}

}  // namespace corvane::map
