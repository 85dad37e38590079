#include "client/tls.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QSslCertificate>
#include <QSslError>
#include <QStringList>

#include "framework/text.h"

namespace corvane::client {
namespace {

constexpr qsizetype kFingerprintBytes = 32;
constexpr qsizetype kGroupBytes = 2;

struct TlsTexts {
  Q_DECLARE_TR_FUNCTIONS(corvane::client::Tls)
};

}  // namespace

QByteArray FingerprintOf(const QByteArray& certificate) {
  return QCryptographicHash::hash(certificate, QCryptographicHash::Sha256);
}

QString FingerprintText(const QByteArray& fingerprint) {
  QStringList groups;
  for (qsizetype i = 0; i < fingerprint.size(); i += kGroupBytes)
    groups += QString::fromLatin1(fingerprint.mid(i, kGroupBytes).toHex()).toUpper();
  return groups.join(' ');
}

std::optional<QByteArray> ParseFingerprint(const QString& text) {
  QString digits = text.simplified();
  digits.remove(' ').remove(':');
  const QByteArray bytes = QByteArray::fromHex(digits.toLatin1());
  // fromHex skips what is no digit.
  if (bytes.size() != kFingerprintBytes || digits.size() != 2 * kFingerprintBytes) return {};
  return bytes;
}

void ConnectTls(QSslSocket& socket, const QString& host, std::uint16_t port, const Tls& tls) {
  // A pinned fingerprint decides alone.
  if (!tls.fingerprint.isEmpty()) socket.setPeerVerifyMode(QSslSocket::QueryPeer);
  socket.connectToHostEncrypted(host, port, tls.name.isEmpty() ? host : tls.name);
}

std::optional<Ending> TlsFault(const QSslSocket& socket, const Tls& tls) {
  using Cause = Ending::Cause;
  const QByteArray certificate = socket.peerCertificate().toDer();
  const auto fault = [&](Cause cause, const QString& text) {
    return Ending{cause, TextFromDisplay(text), certificate};
  };
  if (!QSslSocket::supportsSsl())
    return fault(Cause::NoTls, TlsTexts::tr("Qt finds no TLS library on this system"));
  if (socket.isEncrypted()) {
    if (tls.fingerprint.isEmpty() || FingerprintOf(certificate) == tls.fingerprint) return {};
    return fault(Cause::CertificateChanged, FingerprintText(tls.fingerprint));
  }
  if (socket.mode() == QSslSocket::UnencryptedMode) return {};
  QStringList errors;
  for (const QSslError& error : socket.sslHandshakeErrors())
    errors += error.errorString();
  if (tls.fingerprint.isEmpty() && !errors.isEmpty())
    return fault(Cause::Untrusted, errors.join(QStringLiteral("; ")));
  return fault(Cause::NoTls, TlsTexts::tr("the server may not expect one here (%1)")
                                 .arg(socket.error() == QSslSocket::UnknownSocketError
                                          ? TlsTexts::tr("it does not answer")
                                          : socket.errorString()));
}

}  // namespace corvane::client
