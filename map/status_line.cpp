#include "map/status_line.h"

#include <chrono>
#include <cmath>

#include <QPainter>
#include <QTextDocument>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {

using State = client::Connection::State;

namespace {

// Beside the controls there may be little room, or none.
class ElidedLabel : public QLabel {
 public:
  using QLabel::QLabel;

 protected:
  void paintEvent(QPaintEvent*) override {
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, width());
    if (fontMetrics().horizontalAdvance(shown) <= width())
      QPainter(this).drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter, shown);
  }
};

}  // namespace

StatusLine::StatusLine(client::Connection& connection, QWidget* parent)
    : QStatusBar(parent),
      lblState(new ElidedLabel(this)),
      prgCutting(new QProgressBar(this)),
      lblSilenced(new QLabel(tr("Alarms silenced"), this)),
      lblRecording(new QLabel(QStringLiteral("\u25cf ") + tr("Recording"), this)),
      lblPlace(new QLabel(this)),
      myConnection(connection) {
  lblState->setTextFormat(Qt::PlainText);
  // Long names in the text must not keep the window wide.
  lblState->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  // Their names are their texts.
  lblState->setAccessibleDescription(tr("State of the connection"));
  lblPlace->setAccessibleDescription(tr("Coordinates under the pointer"));
  lblPlace->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("-00000, -00000")));
  lblPlace->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  prgCutting->setFormat(tr("Preparing the picture: %p%"));
  prgCutting->setAccessibleName(tr("Preparing the picture"));
  prgCutting->setMinimumWidth(fontMetrics().horizontalAdvance(prgCutting->format()) + 40);
  addWidget(lblState, 1);
  for (QWidget* part : std::initializer_list<QWidget*>{prgCutting, lblSilenced, lblRecording}) {
    addPermanentWidget(part);
    part->hide();
  }
  addPermanentWidget(lblPlace);
  connect(&myTimer, &QTimer::timeout, this, [this] { Update(); });
  myTimer.start(std::chrono::milliseconds(500));
  myStateChanged = myConnection.StateChanged.Connect([this] { Update(); });
  Update();
}

void StatusLine::Update() {
  const QString text = StateText();
  if (text == lblState->text()) return;
  lblState->setText(text);
  lblState->setToolTip(Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal));
}

QString StatusLine::StateText() {
  const client::Destination& where = myConnection.CurrentDestination();
  const QString host = VisibleText(TextFromDisplay(where.host));
  switch (myConnection.CurrentState()) {
    case State::Offline:
      return tr("Not connected");
    case State::Connecting:
      return tr("Connecting to %1...").arg(host);
    case State::LoggingIn:
      return tr("Logging in to %1...").arg(VisibleText(where.account.network));
    case State::Waiting:
      return tr("The connection is lost");
    case State::Online:
      break;
  }
  const QString as = VisibleText(where.account.userName);
  const auto others = myConnection.Others().Count();
  return tr("%1 in %2 on %3, %4")
      .arg(myConnection.IsAdministrator() ? tr("%1 (administrator)").arg(as) : as,
           VisibleText(where.account.network), host,
           others == 1 ? tr("1 other") : tr("%1 others").arg(others));
}

void StatusLine::ShowPlace(std::optional<QPointF> place) const {
  lblPlace->setText(place ? QStringLiteral("%1, %2")
                                .arg(std::floor(place->x()), 0, 'f', 0)
                                .arg(std::floor(place->y()), 0, 'f', 0)
                          : QString());
}

void StatusLine::ShowProgress(int percent) const {
  prgCutting->setValue(percent);
  prgCutting->setVisible(percent < 100);
}

}  // namespace corvane::map
