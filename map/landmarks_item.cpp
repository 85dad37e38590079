#include "map/landmarks_item.h"

#include <utility>

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

// Painted after the members, whose labels come first.
class LandmarksItem::NamesItem : public QGraphicsItem {
 public:
  explicit NamesItem(LandmarksItem& landmarks) : myLandmarks(landmarks) { setZValue(1); }

  QRectF boundingRect() const override { return myLandmarks.boundingRect(); }
  void paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget* widget) override {
    if (widget != nullptr) myLandmarks.DrawNames(*painter, *widget);
  }

 private:
  LandmarksItem& myLandmarks;
};

LandmarksItem::LandmarksItem(const LandmarkBoard& board, MapScene& scene)
    : myBoard(board), myScene(scene), myNames(new NamesItem(*this)) {
  setZValue(-1);
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
    QStaticText name(VisibleText(TextFromDisplay(landmark.name), kNameShown));
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
    if (hasMoved) mark.namePlace = {};
    const QPointF at = toView.map(mark.landmark->at);
    if (!room.contains(at.toPoint())) continue;
    myVisible.push_back({&mark, at});
    myArt.Draw(*painter, at, mark.icon, mark.landmark->colour);
  }
}

// Below the icon, or above it. Until the view moves, a name stays where it is if it can.
void LandmarksItem::DrawNames(QPainter& painter, const QWidget& window) {
  painter.resetTransform();
  painter.setFont(window.font());
  painter.setPen(Qt::black);
  LabelPlacement placement = myScene.Markers().FreePlaces();
  for (const auto& [mark, at] : myVisible)
    placement.Avoid(LandmarkArt::SpaceOf(mark->icon, at));
  for (const auto& [mark, at] : myVisible) {
    if (mark->name.text().isEmpty()) continue;
    mark->name.prepare({}, window.font());
    const QRect icon = LandmarkArt::SpaceOf(mark->icon, QPoint());
    const QSize size = NameSize(mark->name);
    const QPoint below(-size.width() / 2, icon.bottom() + 1);
    const QPoint above(-size.width() / 2, icon.top() - size.height());
    const QPoint last = mark->namePlace == above ? above : below;
    mark->namePlace = {};
    for (const QPoint& place : {last, last == below ? above : below}) {
      const QRect rect(at.toPoint() + place, size);
      if (!placement.Take(rect)) continue;
      mark->namePlace = place;
      painter.fillRect(rect, QColor(255, 255, 255, 200));
      painter.drawStaticText(rect.topLeft() + QPoint(kNameMargin, 0), mark->name);
      break;
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
