#include "map/map_edges.h"

#include <cmath>

#include <QPainter>

#include "map/grid.h"

namespace corvane::map {
namespace {

constexpr int kBarMargin = 5;
constexpr int kCornerGap = 8;
constexpr int kTickGap = 3;

double ScaleOf(const QGraphicsView& view) {
  return view.transform().m11();
}

}  // namespace

MapRuler::MapRuler(Qt::Orientation orientation, QGraphicsView& view)
    : QWidget(&view), myView(view), myOrientation(orientation) {}

void MapRuler::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QPalette& colours = palette();
  painter.fillRect(rect(), colours.color(QPalette::Window));
  const bool isLevel = myOrientation == Qt::Horizontal;
  const QRectF part = myView.mapToScene(myView.viewport()->rect()).boundingRect();
  const double step = GridStep(ScaleOf(myView));
  const double last = isLevel ? part.right() : part.bottom();
  // The text of the left edge is turned to read upwards.
  for (double place = std::floor((isLevel ? part.left() : part.top()) / step) * step; place <= last;
       place += step) {
    const QPoint inView = myView.mapFromScene(QPointF(place, place));
    const int at = isLevel ? inView.x() : inView.y();
    const QString text = QString::number(place, 'f', 0);
    const int length = fontMetrics().horizontalAdvance(text) + kTickGap;
    const bool fits = isLevel ? at >= 0 && at + length <= width() : at <= height() && at >= length;
    painter.save();
    isLevel ? painter.translate(at, 0) : painter.translate(0, at);
    if (!isLevel) painter.rotate(-90);
    painter.setPen(colours.color(QPalette::Mid));
    painter.drawLine(0, 0, 0, Thickness());
    painter.setPen(colours.color(QPalette::WindowText));
    if (fits)
      painter.drawText(QRect(kTickGap, 0, length, Thickness()), Qt::AlignLeft | Qt::AlignVCenter,
                       text);
    painter.restore();
  }
}

ScaleBar::ScaleBar(QGraphicsView& view) : QWidget(view.viewport()), myView(view) {
  setObjectName(QStringLiteral("ScaleBar"));
}

double ScaleBar::Step() const {
  return RoundStep(60, ScaleOf(myView));
}

QString ScaleBar::Text() const {
  return tr("%1 units").arg(Step(), 0, 'f', 0);
}

QSize ScaleBar::sizeHint() const {
  const int length = static_cast<int>(std::lround(Step() * ScaleOf(myView)));
  const int text = fontMetrics().horizontalAdvance(Text());
  return {std::max(length, text) + 2 * kBarMargin, fontMetrics().height() + 10};
}

void ScaleBar::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  QColor ground = palette().color(QPalette::Base);
  ground.setAlpha(225);
  painter.fillRect(rect(), ground);
  painter.setPen(palette().color(QPalette::Text));
  const int end = kBarMargin + static_cast<int>(std::lround(Step() * ScaleOf(myView)));
  const int bottom = height() - 4;
  painter.drawText(QRect(kBarMargin, 0, width(), bottom - 3), Qt::AlignLeft | Qt::AlignVCenter,
                   Text());
  painter.fillRect(kBarMargin, bottom - 2, end - kBarMargin, 2, painter.pen().color());
  for (const int at : {kBarMargin, end - 2})
    painter.fillRect(at, bottom - 6, 2, 5, painter.pen().color());
}

MapEdges::MapEdges(QGraphicsView& view)
    : myView(view),
      myLeft(new MapRuler(Qt::Vertical, view)),
      myLower(new MapRuler(Qt::Horizontal, view)),
      myScaleBar(new ScaleBar(view)) {}

void MapEdges::SetButtons(QWidget& buttons) {
  myButtons = &buttons;
  LayOut();
}

void MapEdges::LayOut() const {
  const QRect area = myView.viewport()->geometry();
  myLeft->setGeometry(0, area.top(), Thickness(), area.height());
  myLower->setGeometry(area.left(), area.bottom() + 1, area.width(), Thickness());
  if (myButtons != nullptr) {
    const QSize size = myButtons->sizeHint();
    myButtons->setGeometry({CornerOf(size, Qt::RightEdge), size});
    myButtons->setVisible(size.height() + 2 * kCornerGap <= area.height());
  }
  Update();
}

void MapEdges::Update() const {
  myLeft->update();
  myLower->update();
  const QSize size = myScaleBar->sizeHint();
  myScaleBar->setGeometry({CornerOf(size, Qt::LeftEdge), size});
  const int buttons = myButtons != nullptr ? myButtons->width() + kCornerGap : 0;
  myScaleBar->setVisible(size.width() + buttons + 2 * kCornerGap <= myView.viewport()->width());
}

QPoint MapEdges::CornerOf(QSize size, Qt::Edge side) const {
  const QSize area = myView.viewport()->size();
  return {side == Qt::LeftEdge ? kCornerGap : area.width() - kCornerGap - size.width(),
          area.height() - kCornerGap - size.height()};
}

}  // namespace corvane::map
