#pragma once

#include <string>

#include <QByteArray>
#include <QString>

namespace corvane::client {

// Why a connection ended or could not be made, with the text that belongs to the cause.
struct Ending {
  enum class Cause {
    Left,                // the user left
    Unreachable,         // connecting failed; the text is the system's
    Lost,                // the connection broke; the text is the system's
    Silent,              // a timeout: the server does not answer
    NotGreeted,          // unencrypted, and no byte came
    ExpectsTls,          // unencrypted, and a TLS record came
    NoTls,               // there is no encryption; the text says why
    Untrusted,           // no authority vouches for the certificate; the text says why
    CertificateChanged,  // not the trusted one; the text is the fingerprint of that
    NetworkRefused,      // a login step was answered "FAIL"
    PasswordRefused,
    UserNameRefused,
    AddressBanned,  // sent in place of the greeting; the text is the server's
    Kicked,         // the text is the reason
    Banned,         // the text is the reason
    Dismissed,      // the server said "BYE"
    Malformed       // a violation of the protocol; the text names it
  };

  Cause cause = Cause::Left;
  std::string text;
  QByteArray certificate{};  // shown by the server, in DER form, if the cause is about it

  // Whether a client that was online should reconnect: not if a person ended the connection, nor if
  // the next attempt would fail in the same way.
  bool AllowsReconnect() const;

  // One or two sentences for the user. They contain the peer's text unescaped.
  QString Explanation() const;
};

}  // namespace corvane::client
