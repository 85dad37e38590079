#include "map/connect_dialog.h"

#include <utility>

#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "client/password_digest.h"
#include "framework/text.h"

namespace corvane::map {
namespace {

constexpr int kFieldWidth = 280;

}  // namespace

ConnectDialog::ConnectDialog(const QList<RecentServer>& recent, QWidget& owner)
    : QDialog(&owner),
      cmbRecent(new QComboBox(this)),
      txtHost(new QLineEdit(this)),
      spnPort(new QSpinBox(this)),
      txtNetwork(new QLineEdit(this)),
      txtPassword(new QLineEdit(this)),
      txtUser(new QLineEdit(this)),
      chkRemember(new QCheckBox(tr("&Remember the password (as its digest)"), this)),
      btnConnect(new QPushButton(tr("&Connect"), this)),
      btnCancel(new QPushButton(tr("Cancel"), this)),
      lblMessage(new QLabel(this)),
      myRecent(recent) {
  setObjectName(QStringLiteral("ConnectDialog"));
  setWindowTitle(tr("Connect"));
  spnPort->setRange(1, 65535);
  spnPort->setValue(RecentServer().port);
  txtPassword->setEchoMode(QLineEdit::Password);
  lblMessage->setWordWrap(true);
  lblMessage->setTextFormat(Qt::PlainText);
  lblMessage->setMinimumWidth(kFieldWidth);
  for (const RecentServer& server : recent)
    cmbRecent->addItem(tr("%1 in %2 on %3").arg(server.userName, server.network, server.host));
  LayOut();

  connect(cmbRecent, &QComboBox::activated, this, [this](int index) { Fill(myRecent[index]); });
  for (QLineEdit* field : {txtHost, txtNetwork, txtUser})
    connect(field, &QLineEdit::textChanged, this, [this] { Check(); });
  connect(btnConnect, &QPushButton::clicked, this, [this] { Try(); });
  connect(btnCancel, &QPushButton::clicked, this, [this] { reject(); });
  cmbRecent->setEnabled(!recent.isEmpty());
  if (recent.isEmpty()) {
    txtHost->setFocus();
  } else {
    Fill(recent.front());
    (myDigest.isEmpty() ? static_cast<QWidget*>(txtPassword) : btnConnect)->setFocus();
  }
  Check();
}

void ConnectDialog::LayOut() {
  auto* form = new QFormLayout;
  const auto add = [form](const QString& label, QWidget* field) {
    form->addRow(label, field);
    field->setMinimumWidth(kFieldWidth);
  };
  add(tr("Rec&ent:"), cmbRecent);
  add(tr("&Server:"), txtHost);
  form->addRow(tr("P&ort:"), spnPort);
  add(tr("&Network:"), txtNetwork);
  add(tr("&Password:"), txtPassword);
  add(tr("&User name:"), txtUser);
  form->addRow(QString(), chkRemember);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(btnConnect);
  buttons->addWidget(btnCancel);
  btnConnect->setDefault(true);
  auto* column = new QVBoxLayout(this);
  column->addLayout(form);
  column->addWidget(lblMessage);
  column->addLayout(buttons);
  column->setSizeConstraint(QLayout::SetFixedSize);
}

void ConnectDialog::Fill(const RecentServer& server) {
  txtHost->setText(server.host);
  spnPort->setValue(server.port);
  txtNetwork->setText(server.network);
  txtUser->setText(server.userName);
  txtPassword->clear();
  myDigest = server.digest;
  chkRemember->setChecked(!myDigest.isEmpty());
  txtPassword->setPlaceholderText(myDigest.isEmpty() ? QString() : tr("(remembered)"));
}

void ConnectDialog::Check() const {
  btnConnect->setEnabled(!myIsTrying && !txtHost->text().trimmed().isEmpty() &&
                         !txtNetwork->text().isEmpty() && !txtUser->text().isEmpty());
}

void ConnectDialog::TryGiven(const RecentServer& server) {
  Fill(server);
  txtPassword->setPlaceholderText(QString());
  chkRemember->setChecked(false);
  Try();
}

void ConnectDialog::Try() {
  RecentServer server;
  server.host = txtHost->text().trimmed();
  server.port = static_cast<std::uint16_t>(spnPort->value());
  server.network = txtNetwork->text();
  server.userName = txtUser->text();
  server.digest = myDigest;
  if (myDigest.isEmpty() || !txtPassword->text().isEmpty()) {
    server.digest =
        QByteArray::fromStdString(client::PasswordDigest(TextFromDisplay(txtPassword->text())));
  }
  SetTrying(true);
  lblMessage->setText(tr("Connecting to %1...").arg(server.host));
  if (ConnectRequested) ConnectRequested(server, chkRemember->isChecked());
}

void ConnectDialog::ShowFailure(const QString& text) {
  SetTrying(false);
  lblMessage->setText(text);
  // The next input replaces the refused password.
  txtPassword->setFocus();
  txtPassword->selectAll();
}

void ConnectDialog::SetTrying(bool isTrying) {
  myIsTrying = isTrying;
  for (QWidget* field : std::initializer_list<QWidget*>{cmbRecent, txtHost, spnPort, txtNetwork,
                                                        txtPassword, txtUser, chkRemember}) {
    field->setEnabled(!isTrying && (field != cmbRecent || !myRecent.isEmpty()));
  }
  Check();
}

void ConnectDialog::reject() {
  if (std::exchange(myIsTrying, false) && Cancelled) Cancelled();
  ShowFailure({});
  QDialog::reject();
}

}  // namespace corvane::map
