#include "map/place_summary.h"

#include <QFormLayout>
#include <QStringList>
#include <QVBoxLayout>

#include "client/tls.h"
#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {
namespace {

constexpr std::size_t kMaxNetworkShown = 60;
constexpr qsizetype kLineLength = 40;
constexpr int kSummaryWidth = 380;

// Whole, since the end of a host name says whose it is.
QString InLines(QString text) {
  for (qsizetype at = kLineLength; at < text.size(); at += kLineLength + 1)
    text.insert(at, '\n');
  return text;
}

}  // namespace

PlaceSummary::PlaceSummary(const Place& place, const RecentServer* known, QWidget* parent)
    : QWidget(parent),
      lblServer(new QLabel(this)),
      lblNetwork(new QLabel(this)),
      lblEncryption(new QLabel(this)),
      lblWarning(new QLabel(this)),
      chkReplace(new QCheckBox(tr("&Trust the new certificate from now on"), this)),
      chkContent(new QCheckBox(this)),
      myOffered(place.fingerprint),
      myTrusted(place.fingerprint),
      myIsEncrypted(place.isEncrypted) {
  const bool isTrusted = known != nullptr && known->isEncrypted;
  if (isTrusted) {
    myIsEncrypted = true;
    myTrusted = known->fingerprint;
  }
  const bool isChanged = isTrusted && !myOffered.isEmpty() && myOffered != myTrusted;
  for (QLabel* label : {lblServer, lblNetwork, lblEncryption, lblWarning}) {
    label->setTextFormat(Qt::PlainText);
    label->setMinimumWidth(kSummaryWidth);
  }
  lblServer->setText(tr("%1, port %2").arg(InLines(place.host)).arg(place.port));
  lblNetwork->setText(VisibleText(TextFromDisplay(place.network), kMaxNetworkShown));
  lblEncryption->setText(EncryptionText());
  lblWarning->setWordWrap(true);
  QFont bold = lblWarning->font();
  bold.setBold(true);
  lblWarning->setFont(bold);
  lblWarning->setText(
      tr("Warning: this place names another certificate than the one that you trust for this "
         "server:\n%1\nAsk the operator of the server. If nobody can say why it has changed, "
         "somebody may be listening.")
          .arg(InLines(client::FingerprintText(myOffered))));
  lblWarning->setVisible(isChanged);
  chkReplace->setVisible(isChanged);
  chkContent->setText(tr("Use its pictures (%1) and &landmarks (%2)")
                          .arg(place.pictures.size())
                          .arg(place.landmarks.size()));
  chkContent->setChecked(true);
  chkContent->setVisible(!place.pictures.isEmpty() || !place.landmarks.isEmpty());

  auto* form = new QFormLayout;
  form->addRow(tr("Server:"), lblServer);
  form->addRow(tr("Network:"), lblNetwork);
  form->addRow(tr("Encryption:"), lblEncryption);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins({});
  column->addLayout(form);
  for (QWidget* part : std::initializer_list<QWidget*>{lblWarning, chkReplace, chkContent})
    column->addWidget(part);
  connect(chkReplace, &QCheckBox::toggled, this, [this] {
    lblEncryption->setText(EncryptionText());
    if (TrustChanged) TrustChanged();
  });
}

const QByteArray& PlaceSummary::Fingerprint() const {
  return chkReplace->isChecked() ? myOffered : myTrusted;
}

QString PlaceSummary::EncryptionText() const {
  if (!myIsEncrypted) return tr("None: others on the way can read\nyour password and position");
  if (Fingerprint().isEmpty()) return tr("TLS, if an authority vouches for the server");
  return tr("TLS, with the certificate\n%1").arg(InLines(client::FingerprintText(Fingerprint())));
}

}  // namespace corvane::map
