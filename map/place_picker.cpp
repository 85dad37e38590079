#include "map/place_picker.h"

#include <cmath>
#include <utility>

#include <QKeyEvent>
#include <QMouseEvent>

namespace corvane::map {

PlacePicker::PlacePicker(MapView& map) : myMap(map), lblHint(new QLabel(&map)) {
  lblHint->setObjectName(QStringLiteral("lblHint"));
  lblHint->setFrameShape(QFrame::StyledPanel);
  lblHint->setAutoFillBackground(true);
  lblHint->setMargin(6);
  lblHint->setWordWrap(true);
  lblHint->hide();
}

void PlacePicker::Start(const QString& what, std::function<void(QPointF)> chosen) {
  if (!myChosen) {
    myMap.installEventFilter(this);
    myMap.viewport()->installEventFilter(this);
  }
  myChosen = std::move(chosen);
  lblHint->setText(tr("%1 Return takes the middle of the map, Esc cancels.").arg(what));
  const int width = std::min(myMap.width() - 20, lblHint->fontMetrics().averageCharWidth() * 60);
  lblHint->resize(width, lblHint->heightForWidth(width));
  lblHint->move((myMap.width() - width) / 2, 10);
  lblHint->show();
  lblHint->raise();
  myMap.setFocus();
}

bool PlacePicker::eventFilter(QObject* watched, QEvent* event) {
  const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
  if (watched == &myMap && isKey) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Escape && key != Qt::Key_Return && key != Qt::Key_Enter) return false;
    // Esc is also a shortcut of the map. An accepted override comes again as a key.
    event->accept();
    if (event->type() == QEvent::KeyPress)
      Finish(key == Qt::Key_Escape ? std::nullopt
                                   : std::optional(myMap.viewport()->rect().center()));
    return true;
  }
  if (watched == &myMap) return false;
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::ContextMenu:
      return true;
    case QEvent::MouseButtonRelease: {
      const auto* mouse = static_cast<QMouseEvent*>(event);
      Finish(mouse->button() == Qt::LeftButton ? std::optional(mouse->pos()) : std::nullopt);
      return true;
    }
    default:
      return false;
  }
}

void PlacePicker::Finish(std::optional<QPoint> inView) {
  myMap.removeEventFilter(this);
  myMap.viewport()->removeEventFilter(this);
  lblHint->hide();
  const auto chosen = std::exchange(myChosen, nullptr);
  if (inView) chosen(WholePlace(myMap.mapToScene(*inView)));
}

QPointF WholePlace(QPointF place) {
  return {std::floor(place.x()), std::floor(place.y())};
}

}  // namespace corvane::map
