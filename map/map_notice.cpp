#include "map/map_notice.h"

#include <algorithm>
#include <chrono>

#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QPropertyAnimation>

namespace corvane::map {
namespace {

constexpr int kMargin = 8;
constexpr std::chrono::milliseconds kBrief{6000};
constexpr double kFadesFrom = 0.8;  // share of the time

}  // namespace

MapNotice::MapNotice(QAbstractScrollArea& map, Qt::Edge edge, const QString& button)
    : QFrame(&map), lblText(new QLabel(this)), myViewport(map.viewport()), myEdge(edge) {
  setObjectName(QStringLiteral("MapNotice"));
  lblText->setTextFormat(Qt::PlainText);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(12, 6, 12, 6);
  row->addWidget(lblText, 1);
  if (!button.isEmpty()) {
    btnAct = new QPushButton(button, this);
    row->addWidget(btnAct);
  }
  hide();
  map.viewport()->installEventFilter(this);
}

void MapNotice::Show(const QString& text, Kind kind, const QString& button) {
  setVisible(!text.isEmpty());
  if (text == lblText->text()) return;
  const bool isCalm = kind == Kind::Calm;
  setStyleSheet(
      QStringLiteral("#MapNotice { background: %1; border: 1px solid %2; border-radius: 5px }"
                     "QLabel { color: %3 }")
          .arg(isCalm ? QStringLiteral("rgba(28, 32, 38, 225)") : QStringLiteral("#ffdf8a"),
               isCalm ? QStringLiteral("#5c6672") : QStringLiteral("#9a6b00"),
               isCalm ? QStringLiteral("white") : QStringLiteral("#2b2000")));
  lblText->setText(text);
  if (!button.isEmpty()) btnAct->setText(button);
  if (btnAct != nullptr) btnAct->setVisible(!button.isEmpty());
  Place();
}

void MapNotice::ShowBriefly(const QString& text) {
  Show(text, Kind::Calm);
  auto* effect = new QGraphicsOpacityEffect(this);
  setGraphicsEffect(effect);
  auto* fading = new QPropertyAnimation(effect, "opacity", effect);
  fading->setDuration(static_cast<int>(kBrief.count()));
  fading->setKeyValueAt(0, 1.0);
  fading->setKeyValueAt(kFadesFrom, 1.0);
  fading->setKeyValueAt(1, 0.0);
  connect(fading, &QAbstractAnimation::finished, this, &QWidget::hide);
  fading->start();
}

bool MapNotice::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Resize) Place();
  return QFrame::eventFilter(watched, event);
}

void MapNotice::Place() {
  const QRect room = myViewport->geometry().adjusted(kMargin, kMargin, -kMargin, -kMargin);
  lblText->setWordWrap(false);
  QSize size = sizeHint();
  if (size.width() > room.width()) {
    lblText->setWordWrap(true);
    size = {room.width(), heightForWidth(room.width())};
  }
  const int y = myEdge == Qt::TopEdge ? room.top() : room.bottom() + 1 - size.height();
  setGeometry(QRect(QPoint(room.left() + (room.width() - size.width()) / 2, y), size));
  raise();
}

}  // namespace corvane::map
