#include "map/pings.h"

#include <QCheckBox>
#include <QVBoxLayout>

#include "framework/text.h"
#include "map/text_dialog.h"

namespace corvane::map {
namespace {

using client::Clock;

constexpr std::chrono::milliseconds kPingFrame{100};

}  // namespace

Pings::Pings(client::Connection& connection, Settings& settings, QWidget& window)
    : myConnection(connection), mySettings(settings), myWindow(window) {
  QObject::connect(&myTimer, &QTimer::timeout, &myTimer, [this] { Advance(Clock::now()); });
}

void Pings::ShowIn(MapScene& scene) {
  myItem = new PingsItem(myPings, scene.Facet());
  scene.addItem(myItem);
}

void Pings::Receive(const QString& message) {
  const std::optional<Ping> ping = ParsePing(message);
  if (!ping) return;
  if (myPings.size() == kMaxShown) myPings.pop_front();
  myPings.push_back({*ping, Clock::now()});
  myTimer.start(kPingFrame);
}

void Pings::Advance(Clock::time_point now) {
  while (!myPings.empty() && now - myPings.front().since >= PingsItem::kLifetime)
    myPings.pop_front();
  if (myPings.empty()) myTimer.stop();
  if (myItem != nullptr) myItem->update();
}

void Pings::Ask(QPointF place, int facet) {
  const client::Destination& server = myConnection.CurrentDestination();
  const QString unasked =
      QStringLiteral("unasked pings %1:%2").arg(server.host.toLower()).arg(server.port);
  const bool asks = mySettings.Stored(unasked).isEmpty();
  QString hint = tr("Everybody in the network gets the message, and sees the place on the map.");
  if (asks) {
    hint += "\n\n" + tr("Careful: a server under classic rules ends when a message is sent while "
                        "somebody is connected to it who has chosen no network yet.");
  }
  auto* dialog = new TextDialog(tr("Ping"), hint, tr("&Word:"), tr("&Send"), myWindow);
  auto* chkUnasked = new QCheckBox(tr("&Do not ask again for this server"), dialog);
  chkUnasked->setObjectName(QStringLiteral("chkUnasked"));
  chkUnasked->setVisible(asks);
  static_cast<QVBoxLayout*>(dialog->layout())->insertWidget(2, chkUnasked);
  QWidget::setTabOrder(dialog->txtText, chkUnasked);
  const auto pingWith = [place, facet](const QString& word) {
    return Ping{word.trimmed(), static_cast<int>(place.x()), static_cast<int>(place.y()), facet};
  };
  // A word that nobody could read back is not sent.
  QObject::connect(dialog->txtText, &QLineEdit::textChanged, dialog, [=](const QString& word) {
    dialog->btnOK->setEnabled(ParsePing(ToMessage(pingWith(word))).has_value());
  });
  dialog->txtText->setMaxLength(Ping::kMaxWord);
  dialog->txtText->setText(tr("Ping"));
  dialog->txtText->selectAll();
  dialog->Confirmed = [=, this](const QString& word) {
    if (chkUnasked->isChecked()) mySettings.Store(unasked, "1");
    myConnection.SendMessage(TextFromDisplay(ToMessage(pingWith(word))));
  };
  dialog->open();
}

}  // namespace corvane::map
