#include "map/map_buttons.h"

#include <algorithm>

#include <QPainter>
#include <QVBoxLayout>

namespace corvane::map {
namespace {

constexpr int kMinSide = 28;
// The drawings' own units on a side.
constexpr double kUnits = 24;

}  // namespace

MapButton::MapButton(Drawing drawing, QAction& action, QWidget* parent)
    : QToolButton(parent), myDrawing(drawing) {
  setDefaultAction(&action);
  const QString name = action.text().remove('&');
  setAccessibleName(name);
  setToolTip(action.shortcut().isEmpty()
                 ? name
                 : QStringLiteral("%1 (%2)").arg(
                       name, action.shortcut().toString(QKeySequence::NativeText)));
  setObjectName(QString(action.objectName()).replace(0, 3, QStringLiteral("btn")));
  setCursor(Qt::ArrowCursor);
  const int side = std::max(kMinSide, fontMetrics().height() * 3 / 2);
  setFixedSize(side, side);
}

void MapButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(width() / kUnits, height() / kUnits);
  const auto colour = [this](QPalette::ColorRole role) {
    return palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, role);
  };
  const bool isLit = isDown() || underMouse();
  const QColor ink =
      colour(isLit && isEnabled() ? QPalette::HighlightedText : QPalette::ButtonText);
  painter.setPen(hasFocus() ? QPen(colour(QPalette::Highlight), 2.5)
                            : QPen(colour(QPalette::Mid), 1));
  painter.setBrush(colour(isLit && isEnabled() ? QPalette::Highlight : QPalette::Button));
  painter.drawRoundedRect(QRectF(1.5, 1.5, kUnits - 3, kUnits - 3), 4, 4);
  painter.setPen(QPen(ink, 2, Qt::SolidLine, Qt::RoundCap));
  painter.setBrush(Qt::NoBrush);
  const QPointF middle(kUnits / 2, kUnits / 2);
  switch (myDrawing) {
    case Drawing::Plus:
      painter.drawLine(middle - QPointF(0, 5), middle + QPointF(0, 5));
      [[fallthrough]];
    case Drawing::Minus:
      painter.drawLine(middle - QPointF(5, 0), middle + QPointF(5, 0));
      break;
    case Drawing::People:
      for (const double x : {8.5, 15.5}) {
        painter.setBrush(ink);
        painter.drawEllipse(QPointF(x, 8.5), 1.5, 1.5);
        painter.setBrush(Qt::NoBrush);
        painter.drawArc(QRectF(x - 3, 12.5, 6, 9), 0, 180 * 16);
      }
      break;
    case Drawing::Target:
      painter.drawEllipse(middle, 4.5, 4.5);
      for (const QPointF& to : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)})
        painter.drawLine(middle + to * 4.5, middle + to * 7);
      painter.setBrush(ink);
      painter.drawEllipse(middle, 0.8, 0.8);
      break;
  }
}

MapButtons::MapButtons(QAction& zoomIn, QAction& zoomOut, QAction& everybody, QAction& me,
                       QWidget* parent)
    : QWidget(parent) {
  setObjectName(QStringLiteral("MapButtons"));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins({});
  column->setSpacing(3);
  using enum MapButton::Drawing;
  column->addWidget(new MapButton(Plus, zoomIn, this));
  column->addWidget(new MapButton(Minus, zoomOut, this));
  column->addWidget(new MapButton(People, everybody, this));
  column->addWidget(new MapButton(Target, me, this));
}

}  // namespace corvane::map
