#include "client/password_digest.h"

#include <QCryptographicHash>

namespace corvane::client {

std::string PasswordDigest(const std::string& password) {
  const QByteArray bytes = QByteArray::fromStdString(password);
  return QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toStdString();
}

}  // namespace corvane::client
