#include "map/landmarks_item.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QPainter>
#include <QWidget>

#include "framework/text.h"
#include "framework/visible_text.h"
#include "map/marker_board.h"

namespace corvane::map {
namespace {

constexpr int kNameMargin = 3;

static_assert(Landmark::kMaxCoordinate == kMaxCoordinate);

// Of a name of that size: below the icon, and above it.
std::array<QRect, 2> PlacesOf(std::size_t icon, QSize size) {
  const QRect space = LandmarkArt::SpaceOf(icon, QPoint());
  const int left = -size.width() / 2;
  return {QRect(QPoint(left, space.bottom() + 1), size),
          QRect(QPoint(left, space.top() - size.height()), size)};
}

}  // namespace

LandmarksItem::LandmarksItem(const LandmarkBoard& board, MapScene& scene)
    : myBoard(board), myScene(scene) {
  setZValue(-1);
  myScene.Markers().Painted = [this](QPainter& painter, LabelPlacement& placement) {
    if (isVisible()) DrawNames(painter, placement);
  };
  Reload();
}

QRectF LandmarksItem::boundingRect() const {
  return {-kMaxCoordinate, -kMaxCoordinate, 2 * kMaxCoordinate, 2 * kMaxCoordinate};
}

void LandmarksItem::Reload() {
  myVisible.clear();
  myMarks.clear();
  for (const Landmark& landmark : myBoard.All()) {
    if (landmark.facet != myScene.Facet()) continue;
    QStaticText name(VisibleText(TextFromDisplay(landmark.name), kMaxNameLength));
    name.setTextFormat(Qt::PlainText);
    myMarks.push_back({&landmark, LandmarkArt::NumberOf(landmark.icon), name});
  }
  update();
}

void LandmarksItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget* widget) {
  if (widget == nullptr) return;
  const QTransform toView = painter->worldTransform();
  painter->resetTransform();
  const QRect room = widget->rect().adjusted(-200, -40, 200, 40);
  const bool hasMoved = std::exchange(myToView, toView) != toView;
  myVisible.clear();
  for (Mark& mark : myMarks) {
    if (hasMoved) mark.namePlace.moveTopLeft({});
    const QPointF at = toView.map(mark.landmark->at);
    if (!room.contains(at.toPoint())) continue;
    myVisible.push_back({&mark, at});
    myArt.Draw(*painter, at, mark.icon, mark.landmark->colour);
  }
}

// Until the view moves, a name stays where it is if it can.
void LandmarksItem::DrawNames(QPainter& painter, LabelPlacement& placement) {
  if (std::exchange(myFont, painter.font()) != painter.font()) {
    for (Mark& mark : myMarks)
      mark.namePlace = {};
  }
  painter.setPen(Qt::black);
  const QSize least(2 * kNameMargin + 1, painter.fontMetrics().height());
  for (const auto& [mark, at] : myVisible)
    placement.Avoid(LandmarkArt::SpaceOf(mark->icon, at));
  for (const auto& [mark, at] : myVisible) {
    if (mark->name.text().isEmpty()) continue;
    const QPoint middle = at.toPoint();
    const auto isFree = [&](const QRect& place) {
      return placement.IsFree(place.translated(middle));
    };
    if (mark->namePlace.isEmpty()) {
      // Where many landmarks stand, most names find no place: they are not laid out.
      if (std::ranges::none_of(PlacesOf(mark->icon, least), isFree)) continue;
      mark->name.prepare({}, myFont);
      mark->namePlace.setSize(mark->name.size().toSize() + QSize(2 * kNameMargin, 0));
    }
    std::array places = PlacesOf(mark->icon, mark->namePlace.size());
    if (mark->namePlace == places[1]) std::swap(places[0], places[1]);
    const auto place = std::ranges::find_if(places, isFree);
    mark->namePlace.moveTopLeft({});
    if (place == places.end()) continue;
    mark->namePlace = *place;
    const QRect name = place->translated(middle);
    placement.Avoid(name);
    painter.fillRect(name, QColor(255, 255, 255, 200));
    painter.drawStaticText(name.topLeft() + QPoint(kNameMargin, 0), mark->name);
  }
}

const Landmark* LandmarksItem::LandmarkAt(QPoint inView, const QTransform& toView) const {
  const Landmark* found = nullptr;
  for (const Mark& mark : myMarks) {
    const QRect space = LandmarkArt::SpaceOf(mark.icon, toView.map(mark.landmark->at));
    if (space.contains(inView)) found = mark.landmark;
  }
  return found;
}

}  // namespace corvane::map
