#include "client/ending.h"

#include <QCoreApplication>

#include "client/tls.h"
#include "framework/text.h"

namespace corvane::client {
namespace {

struct Texts {
  Q_DECLARE_TR_FUNCTIONS(corvane::client::Ending)
};

}  // namespace

bool Ending::AllowsReconnect() const {
  return cause == Cause::Unreachable || cause == Cause::Lost || cause == Cause::Silent ||
         cause == Cause::NotGreeted || cause == Cause::NoTls || cause == Cause::NetworkRefused ||
         cause == Cause::UserNameRefused;
}

QString Ending::Explanation() const {
  QString detail = DisplayText(text);
  switch (cause) {
    case Cause::Left:
      return Texts::tr("You have left the network.");
    case Cause::Unreachable:
      return Texts::tr("The server cannot be reached: %1").arg(detail);
    case Cause::Lost:
      return Texts::tr("The connection was lost: %1").arg(detail);
    case Cause::Silent:
      return Texts::tr("The connection was lost: the server has stopped answering.");
    case Cause::NotGreeted:
      return Texts::tr(
          "The server has sent no greeting. It may expect an encrypted connection (TLS), or be "
          "full.");
    case Cause::ExpectsTls:
      return Texts::tr("The server expects an encrypted connection (TLS).");
    case Cause::NoTls:
      return Texts::tr("No encrypted connection (TLS) could be made: %1").arg(detail);
    case Cause::Untrusted:
      return Texts::tr("The server's certificate is not trusted: %1. Its SHA-256 fingerprint: %2")
          .arg(detail, FingerprintText(FingerprintOf(certificate)));
    case Cause::CertificateChanged:
      return Texts::tr(
                 "The server shows another certificate than the trusted one. Trusted: %1. "
                 "Shown: %2")
          .arg(detail, FingerprintText(FingerprintOf(certificate)));
    case Cause::NetworkRefused:
      return Texts::tr("There is no such network, or it is full or disabled.");
    case Cause::PasswordRefused:
      return Texts::tr("Wrong password.");
    case Cause::UserNameRefused:
      return Texts::tr(
          "This name is taken. After a lost connection, the server may hold it for three "
          "minutes.");
    case Cause::AddressBanned:
      return Texts::tr("The server refuses this address: %1").arg(detail);
    case Cause::Kicked:
      return Texts::tr("You were kicked: %1").arg(detail);
    case Cause::Banned:
      return Texts::tr("You were banned: %1").arg(detail);
    case Cause::Dismissed:
      return Texts::tr("The server has asked you to leave.");
    case Cause::Malformed:
      return Texts::tr("This is not a Corvane server, or it does not work properly: %1")
          .arg(detail);
  }
  return detail;
}

}  // namespace corvane::client
