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
  addWidget(lblState, 1);
  addPermanentWidget(lblPlace);
  connect(&myTimer, &QTimer::timeout, this, [this] { Update(); });
  myTimer.start(std::chrono::milliseconds(500));
  myStateChanged = myConnection.StateChanged.Connect([this] { Update(); });
  Update();
}

void StatusLine::Update() {
  const QString text = Text();
  if (text == lblState->text()) return;
  lblState->setText(text);
  lblState->setToolTip(Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal));
}

// What is on or at work stands first: in a small window it must not be cut off.
QString StatusLine::Text() {
  QStringList parts;
  if (myPercent < 100) parts.append(tr("Preparing the picture: %1 %").arg(myPercent));
  if (myIsRecording) parts.append(QStringLiteral("\u25cf ") + tr("Recording"));
  if (myIsSilenced) parts.append(tr("Alarms silenced"));
  parts.append(StateText());
  return parts.join(QStringLiteral(". "));
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

void StatusLine::ShowProgress(int percent) {
  myPercent = percent;
  Update();
}

void StatusLine::ShowRecording(bool isOn) {
  myIsRecording = isOn;
  Update();
}

void StatusLine::ShowSilenced(bool isOn) {
  myIsSilenced = isOn;
  Update();
}

}  // namespace corvane::map
