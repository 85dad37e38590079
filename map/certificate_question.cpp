#include "map/certificate_question.h"

#include <QFontDatabase>
#include <QSslCertificate>
#include <QStringList>

#include "client/tls.h"
#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {
namespace {

constexpr std::size_t kMaxShown = 60;
constexpr qsizetype kGroupsInLine = 4;

// Names in a certificate are the server's.
QString Shown(const QStringList& names) {
  return VisibleText(TextFromDisplay(names.join(QStringLiteral(", "))), kMaxShown).toHtmlEscaped();
}

QString Row(const QString& label, const QString& html) {
  return QStringLiteral("<tr><td>%1&nbsp;</td><td>%2</td></tr>").arg(label, html);
}

}  // namespace

CertificateQuestion::CertificateQuestion(const QString& host, const client::Ending& ending,
                                         QWidget& owner)
    : QMessageBox(&owner),
      btnTrust(addButton(tr("&Trust"), QMessageBox::AcceptRole)),
      btnCancel(addButton(tr("Cancel"), QMessageBox::RejectRole)) {
  setObjectName(QStringLiteral("CertificateQuestion"));
  setWindowTitle(tr("Unknown Certificate"));
  setAttribute(Qt::WA_DeleteOnClose);
  setIcon(QMessageBox::Warning);
  setTextFormat(Qt::RichText);
  setText(tr("Nobody whom this system trusts vouches that this server is %1.").arg(Shown({host})));

  const QSslCertificate certificate(ending.certificate, QSsl::Der);
  QStringList names = certificate.subjectInfo(QSslCertificate::CommonName) +
                      certificate.subjectAlternativeNames().values();
  names.removeDuplicates();
  const auto day = [](const QDateTime& time) { return time.toString(Qt::ISODate).left(10); };
  const QByteArray fingerprint = client::FingerprintOf(ending.certificate);
  QStringList groups = client::FingerprintText(fingerprint).split(' ');
  for (qsizetype i = kGroupsInLine; i < groups.size(); i += kGroupsInLine)
    groups[i].prepend(QStringLiteral("<br>"));
  const QString font = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
  setInformativeText(
      QStringLiteral("<table>") + Row(tr("Name:"), Shown(names)) +
      Row(tr("Issuer:"), Shown({certificate.issuerDisplayName()})) +
      Row(tr("Valid:"),
          tr("%1 to %2").arg(day(certificate.effectiveDate()), day(certificate.expiryDate()))) +
      Row(tr("Problem:"), DisplayText(ending.text).toHtmlEscaped()) +
      Row(tr("SHA-256:"), QStringLiteral("<span style=\"font-family:'%1'\">%2</span>")
                              .arg(font, groups.join(' '))) +
      QStringLiteral("</table><p>%1</p>")
          .arg(tr(
              "Compare the fingerprint with the one that the operator of the server gave you. If "
              "it differs, somebody else may read your password.")));
  setDefaultButton(btnCancel);
  setEscapeButton(btnCancel);
  connect(btnTrust, &QPushButton::clicked, this, [this, fingerprint] {
    if (Trusted) Trusted(fingerprint);
  });
}

}  // namespace corvane::map
