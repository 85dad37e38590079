#pragma once

#include <cstdint>
#include <optional>

#include <QByteArray>
#include <QSslSocket>
#include <QString>

#include "client/ending.h"

namespace corvane::client {

// The encryption of a connection, and the certificate to trust.
struct Tls {
  // SHA-256 of the only trusted certificate. If empty, the system's authorities must vouch for the
  // server's name.
  QByteArray fingerprint;
  QString name;  // if empty, the host's
};

// SHA-256 of a certificate, which is given in DER form (RFC 5280).
QByteArray FingerprintOf(const QByteArray& certificate);
// In groups of two bytes: "0A1B 2C3D ...".
QString FingerprintText(const QByteArray& fingerprint);
// Reads 64 hexadecimal digits of any case, with or without colons and blanks. None if the text is
// something else.
std::optional<QByteArray> ParseFingerprint(const QString& text);

// Connects, and begins the handshake once it is connected. Send nothing before QSslSocket's
// `encrypted`, and then only if TlsFault returns none.
void ConnectTls(QSslSocket& socket, const QString& host, std::uint16_t port, const Tls& tls);

// Why the server cannot be trusted, or why there is no encryption. To be called at `encrypted`, or
// when the attempt has ended earlier. None if the server is trusted, or if it was never reached.
std::optional<Ending> TlsFault(const QSslSocket& socket, const Tls& tls);

}  // namespace corvane::client
