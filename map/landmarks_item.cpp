#include "map/landmarks_item.h"

#include <QPainter>
#include <QWidget>

#include "framework/text.h"
#include "framework/visible_text.h"
#include "map/marker_board.h"

namespace corvane::map {
namespace {

constexpr std::size_t kNameShown = 40;  // characters
constexpr int kNameMargin = 3;

static_assert(Landmark::kMaxCoordinate == kMaxCoordinate);

QSize NameSize(const QStaticText& name) {
  return name.size().toSize() + QSize(2 * kNameMargin, 0);
}

}  // namespace

LandmarksItem::LandmarksItem(const LandmarkBoard& board, int facet)
    : myBoard(board), myFacet(facet) {
  setZValue(-1);
  Reload();
}

QRectF LandmarksItem::boundingRect() const {
  return {-kMaxCoordinate, -kMaxCoordinate, 2 * kMaxCoordinate, 2 * kMaxCoordinate};
}

void LandmarksItem::Reload() {
  myMarks.clear();
  for (const Landmark& landmark : myBoard.All()) {
    if (landmark.facet != myFacet) continue;
    QStaticText name(VisibleText(TextFromDisplay(landmark.name), kNameShown));
    name.setTextFormat(Qt::PlainText);
    myMarks.push_back({&landmark, LandmarkArt::NumberOf(landmark.icon), name});
  }
  myWindow = {};
  update();
}

void LandmarksItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget* widget) {
  if (widget == nullptr) return;
  const QTransform toView = painter->worldTransform();
  painter->resetTransform();
  const QRect room = widget->rect().adjusted(-200, -40, 200, 40);
  std::vector<Mark*> visible;
  for (Mark& mark : myMarks) {
    if (room.contains(toView.map(mark.landmark->at).toPoint())) visible.push_back(&mark);
  }
  painter->setFont(widget->font());
  if (toView != myNamesFor || widget->rect() != myWindow || widget->font() != myFont) {
    myFont = widget->font();
    PlaceNames(visible, toView, widget->rect());
  }
  for (const Mark* mark : visible)
    myArt.Draw(*painter, toView.map(mark->landmark->at), mark->icon, mark->landmark->colour);
  painter->setPen(Qt::black);
  for (const Mark* mark : visible) {
    if (!mark->showsName) continue;
    const QRect place(toView.map(mark->landmark->at).toPoint() + mark->namePlace,
                      NameSize(mark->name));
    painter->fillRect(place, QColor(255, 255, 255, 200));
    painter->drawStaticText(place.topLeft() + QPoint(kNameMargin, 0), mark->name);
  }
}

// Below the icon, or above it.
void LandmarksItem::PlaceNames(const std::vector<Mark*>& visible, const QTransform& toView,
                               const QRect& window) {
  myNamesFor = toView;
  myWindow = window;
  LabelPlacement placement(window);
  for (const Mark* mark : visible)
    placement.Avoid(LandmarkArt::SpaceOf(mark->icon, toView.map(mark->landmark->at)));
  for (Mark* mark : visible) {
    mark->showsName = false;
    if (mark->name.text().isEmpty()) continue;
    mark->name.prepare({}, myFont);
    const QPoint at = toView.map(mark->landmark->at).toPoint();
    const QRect icon = LandmarkArt::SpaceOf(mark->icon, at);
    const QSize size = NameSize(mark->name);
    const int left = at.x() - size.width() / 2;
    for (const int top : {icon.bottom() + 1, icon.top() - size.height()}) {
      if (mark->showsName) break;
      mark->namePlace = QPoint(left, top) - at;
      mark->showsName = placement.Take({QPoint(left, top), size});
    }
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
