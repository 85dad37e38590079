#include "map/connect_dialog.h"

#include <algorithm>
#include <utility>

#include <QAbstractItemView>
#include <QAction>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "client/password_digest.h"
#include "client/tls.h"
#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {
namespace {

using Cause = client::Ending::Cause;

enum FormRow { kRecent, kServer, kPort, kEncrypted, kFingerprint, kNetwork, kPassword };

constexpr int kFieldWidth = 280;
constexpr std::size_t kMaxRecentLength = 60;

}  // namespace

ConnectDialog::ConnectDialog(const QList<RecentServer>& recent, QWidget& owner)
    : QDialog(&owner),
      cmbRecent(new QComboBox(this)),
      btnRemove(new QPushButton(tr("Remo&ve"), this)),
      txtHost(new QLineEdit(this)),
      spnPort(new QSpinBox(this)),
      chkEncrypted(new QCheckBox(tr("Encr&ypted (TLS)"), this)),
      txtFingerprint(new QLineEdit(this)),
      txtNetwork(new QLineEdit(this)),
      txtPassword(new QLineEdit(this)),
      chkShow(new QCheckBox(tr("Sho&w"), this)),
      txtUser(new QLineEdit(this)),
      chkRemember(new QCheckBox(tr("&Remember the password (as its digest)"), this)),
      btnConnect(new QPushButton(tr("&Connect"), this)),
      btnCancel(new QPushButton(tr("Cancel"), this)),
      lblMessage(new QLabel(this)),
      myRecent(recent),
      myFields(new QWidget(this)),
      myForm(new QFormLayout(myFields)) {
  setObjectName(QStringLiteral("ConnectDialog"));
  setWindowTitle(tr("Connect"));
  spnPort->setRange(1, 65535);
  spnPort->setValue(RecentServer().port);
  txtFingerprint->setEnabled(false);
  txtFingerprint->setPlaceholderText(tr("(SHA-256, if you were told one)"));
  txtPassword->setEchoMode(QLineEdit::Password);
  lblMessage->setWordWrap(true);
  lblMessage->setTextFormat(Qt::PlainText);
  lblMessage->setMinimumWidth(kFieldWidth);
  for (const RecentServer& server : recent) {
    const QString text = tr("%1 in %2 on %3").arg(server.userName, server.network, server.host);
    cmbRecent->addItem(VisibleText(TextFromDisplay(text), kMaxRecentLength));
  }
  btnRemove->setAccessibleName(tr("Remove from the list of recent servers"));
  chkShow->setAccessibleName(tr("Show the password"));
  LayOut();

  connect(cmbRecent, &QComboBox::activated, this, [this](int index) { Fill(myRecent[index]); });
  connect(btnRemove, &QPushButton::clicked, this, [this] { RemoveRecent(); });
  auto* remove = new QAction(cmbRecent);
  remove->setShortcut(Qt::Key_Delete);
  remove->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  cmbRecent->addAction(remove);
  connect(remove, &QAction::triggered, this, [this] { RemoveRecent(); });
  connect(chkShow, &QCheckBox::toggled, this, [this](bool isOn) {
    txtPassword->setEchoMode(isOn ? QLineEdit::Normal : QLineEdit::Password);
  });
  for (QLineEdit* field : {txtHost, txtNetwork, txtUser})
    connect(field, &QLineEdit::textChanged, this, [this] { EnableControls(); });
  connect(txtHost, &QLineEdit::textEdited, this, [this] { FillRememberedTls(); });
  connect(spnPort, &QSpinBox::valueChanged, this, [this] { FillRememberedTls(); });
  connect(chkEncrypted, &QCheckBox::toggled, txtFingerprint, &QLineEdit::setEnabled);
  connect(btnConnect, &QPushButton::clicked, this, [this] { Try(); });
  connect(btnCancel, &QPushButton::clicked, this, &ConnectDialog::reject);
  EnableControls();
  if (recent.isEmpty()) {
    txtHost->setFocus();
  } else {
    Fill(recent.front());
    (myDigest.isEmpty() ? static_cast<QWidget*>(txtPassword) : btnConnect)->setFocus();
  }
}

void ConnectDialog::LayOut() {
  const auto add = [this](const QString& text, QWidget* field, QWidget* beside) {
    auto* label = new QLabel(text, this);
    label->setBuddy(field);
    auto* row = new QHBoxLayout;
    row->addWidget(field, 1);
    row->addWidget(beside);
    myForm->addRow(label, row);
  };
  add(tr("Rec&ent:"), cmbRecent, btnRemove);
  myForm->addRow(tr("&Server:"), txtHost);
  myForm->addRow(tr("P&ort:"), spnPort);
  myForm->addRow(QString(), chkEncrypted);
  myForm->addRow(tr("&Fingerprint:"), txtFingerprint);
  myForm->addRow(tr("&Network:"), txtNetwork);
  add(tr("&Password:"), txtPassword, chkShow);
  myForm->addRow(tr("&User name:"), txtUser);
  myForm->addRow(QString(), chkRemember);
  myForm->setContentsMargins({});
  cmbRecent->setMinimumWidth(kFieldWidth);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(btnConnect);
  buttons->addWidget(btnCancel);
  btnConnect->setDefault(true);
  auto* column = new QVBoxLayout(this);
  column->addWidget(myFields);
  column->addWidget(lblMessage);
  column->addLayout(buttons);
  column->setSizeConstraint(QLayout::SetFixedSize);
}

void ConnectDialog::Fill(const RecentServer& server) {
  txtHost->setText(server.host);
  spnPort->setValue(server.port);
  chkEncrypted->setChecked(server.isEncrypted);
  FillFingerprint(server.fingerprint);
  txtNetwork->setText(server.network);
  txtUser->setText(server.userName);
  txtPassword->clear();
  myDigest = server.digest;
  chkRemember->setChecked(!myDigest.isEmpty());
  txtPassword->setPlaceholderText(myDigest.isEmpty() ? QString() : tr("(remembered)"));
}

void ConnectDialog::FillFingerprint(const QByteArray& fingerprint) const {
  txtFingerprint->setText(client::FingerprintText(fingerprint));
  txtFingerprint->setCursorPosition(0);
}

void ConnectDialog::FillRememberedTls() const {
  const RecentServer* known = Known(txtHost->text().trimmed(), spnPort->value());
  if (known != nullptr && known->isEncrypted) chkEncrypted->setChecked(true);
  if (txtFingerprint->isModified()) return;
  FillFingerprint(known == nullptr ? QByteArray() : known->fingerprint);
}

const RecentServer* ConnectDialog::Known(const QString& host, int port) const {
  const auto it = std::ranges::find_if(myRecent, [&](const RecentServer& server) {
    return server.port == port && (server.host.compare(host, Qt::CaseInsensitive) == 0 ||
                                   CheckedHost(server.host) == host);
  });
  return it == myRecent.end() ? nullptr : &*it;
}

// In the open list, the marked entry.
void ConnectDialog::RemoveRecent() {
  const bool isOpen = cmbRecent->view()->isVisible();
  const int row = isOpen ? cmbRecent->view()->currentIndex().row() : cmbRecent->currentIndex();
  if (row < 0 || myRecent.isEmpty()) return;
  const bool isShown = row == cmbRecent->currentIndex();
  const RecentServer server = myRecent.takeAt(row);
  cmbRecent->removeItem(row);
  if (isShown) Fill(myRecent.value(cmbRecent->currentIndex()));
  if (myRecent.isEmpty()) cmbRecent->hidePopup();
  EnableControls();
  if (Removed) Removed(server);
}

void ConnectDialog::EnableControls() const {
  cmbRecent->setEnabled(!myRecent.isEmpty());
  btnRemove->setEnabled(!myRecent.isEmpty());
  btnConnect->setEnabled(!myIsTrying && !txtHost->text().trimmed().isEmpty() &&
                         !txtNetwork->text().isEmpty() && !txtUser->text().isEmpty());
}

void ConnectDialog::TryGiven(const RecentServer& server) {
  Fill(server);
  if (server.fingerprint.isEmpty()) FillRememberedTls();
  txtPassword->setPlaceholderText(QString());
  chkRemember->setChecked(false);
  Try();
}

void ConnectDialog::Offer(const Place& place) {
  setWindowTitle(tr("Open Place"));
  mySummary = new PlaceSummary(place, Known(place.host, place.port), this);
  for (int row = kRecent; row <= kNetwork; ++row)
    myForm->setRowVisible(row, false);
  static_cast<QBoxLayout*>(layout())->insertWidget(0, mySummary);
  mySummary->TrustChanged = [this] { FillFingerprint(mySummary->Fingerprint()); };

  RecentServer server;
  server.host = place.host;
  server.port = place.port;
  server.network = place.network;
  const auto account = std::ranges::find_if(myRecent, [&](const RecentServer& recent) {
    return recent.port == place.port && recent.network == place.network &&
           CheckedHost(recent.host) == place.host;
  });
  if (account != myRecent.end()) {
    server.userName = account->userName;
    server.digest = account->digest;
  }
  server.isEncrypted = mySummary->IsEncrypted();
  server.fingerprint = mySummary->Fingerprint();
  Fill(server);
  if (!place.digest.isEmpty()) {
    myDigest = place.digest;
    myForm->setRowVisible(kPassword, false);
  }
  QWidget* const next = txtUser->text().isEmpty() ? static_cast<QWidget*>(txtUser) : btnConnect;
  (myDigest.isEmpty() ? txtPassword : next)->setFocus();
}

void ConnectDialog::TryTrusting(const QByteArray& fingerprint) {
  FillFingerprint(fingerprint);
  Try();
}

void ConnectDialog::Try() {
  RecentServer server;
  server.host = txtHost->text().trimmed();
  server.port = static_cast<std::uint16_t>(spnPort->value());
  server.network = txtNetwork->text();
  server.userName = txtUser->text();
  server.isEncrypted = chkEncrypted->isChecked();
  if (!txtFingerprint->text().trimmed().isEmpty()) {
    const auto fingerprint = client::ParseFingerprint(txtFingerprint->text());
    if (server.isEncrypted && !fingerprint) {
      return ShowFault(tr("A SHA-256 fingerprint has 64 hexadecimal digits."), *txtFingerprint);
    }
    server.fingerprint = fingerprint.value_or(QByteArray());
  }
  server.digest = myDigest;
  if (myDigest.isEmpty() || !txtPassword->text().isEmpty()) {
    server.digest =
        QByteArray::fromStdString(client::PasswordDigest(TextFromDisplay(txtPassword->text())));
  }
  SetTrying(true);
  lblMessage->setText(tr("Connecting to %1...").arg(server.host));
  if (ConnectRequested) ConnectRequested(server, chkRemember->isChecked());
}

void ConnectDialog::ShowFailure(const client::Ending& ending) {
  SetTrying(false);
  // The digest in a place file may be out of date.
  if (ending.cause == Cause::PasswordRefused) myForm->setRowVisible(kPassword, true);
  ShowFault(VisibleText(TextFromDisplay(ending.Explanation())), *FieldAtFault(ending.cause));
}

QWidget* ConnectDialog::FieldAtFault(Cause cause) const {
  switch (cause) {
    case Cause::NotGreeted:
    case Cause::ExpectsTls:
    case Cause::NoTls:
      return chkEncrypted;
    case Cause::Untrusted:
    case Cause::CertificateChanged:
      return txtFingerprint;
    case Cause::NetworkRefused:
      return txtNetwork;
    case Cause::PasswordRefused:
      return txtPassword;
    case Cause::UserNameRefused:
      return txtUser;
    default:
      return txtHost;
  }
}

void ConnectDialog::ShowFault(const QString& text, QWidget& field) const {
  lblMessage->setText(text);
  // Screen readers read it with the field.
  field.setAccessibleDescription(text);
  field.setFocus();
  // The next input replaces what was refused.
  if (auto* line = dynamic_cast<QLineEdit*>(&field)) line->selectAll();
}

void ConnectDialog::SetTrying(bool isTrying) {
  myIsTrying = isTrying;
  if (isTrying) btnCancel->setFocus();
  myFields->setEnabled(!isTrying);
  for (QWidget* field : myFields->findChildren<QWidget*>())
    field->setAccessibleDescription({});
  EnableControls();
}

void ConnectDialog::reject() {
  if (std::exchange(myIsTrying, false) && Cancelled) Cancelled();
  SetTrying(false);
  chkShow->setChecked(false);
  ShowFault({}, *txtPassword);
  QDialog::reject();
}

}  // namespace corvane::map
