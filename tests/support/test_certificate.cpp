#include "tests/support/test_certificate.h"

#include <stdexcept>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace corvane {
namespace {

QByteArray Content(const QString& path) {
  QFile file(path);
  if (!file.open(QFile::ReadOnly)) throw std::runtime_error("openssl has made no certificate");
  return file.readAll();
}

}  // namespace

TestCertificate::TestCertificate(const QString& name, int days) {
  const QTemporaryDir folder;
  const auto openssl = [&](const QString& words) {
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.start("openssl", words.split(' '));
    process.waitForFinished();
  };
  openssl(
      "req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -keyout key -out new"
      " -subj /CN=" +
      name + " -addext subjectAltName=" + (name.back().isDigit() ? "IP:" : "DNS:") + name);
  openssl("x509 -in new -signkey key -out certificate -days " + QString::number(days));
  certificate = QSslCertificate(Content(folder.filePath("certificate")));
  key = QSslKey(Content(folder.filePath("key")), QSsl::Ec);
}

}  // namespace corvane
