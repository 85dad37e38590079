#pragma once

#include <QSslCertificate>
#include <QSslKey>
#include <QString>

namespace corvane {

// A self-signed certificate with its key, made by the command `openssl`.
struct TestCertificate {
  // Valid for so many days from now on; expired if less than 0.
  explicit TestCertificate(const QString& name = "127.0.0.1", int days = 2);

  QSslCertificate certificate;
  QSslKey key;
};

}  // namespace corvane
