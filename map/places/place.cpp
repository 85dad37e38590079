#include "map/places/place.h"

#include <QUrl>

namespace corvane::map {

QString CheckedHost(const QString& text) {
  QUrl url;
  url.setHost(text);
  const QString host = url.host(QUrl::FullyEncoded);
  // The same name as without.
  if (host.endsWith('.')) return CheckedHost(host.chopped(1));
  return host.contains('%') ? QString() : host;
}

std::optional<QByteArray> ParseDigits(const QString& text, qsizetype size) {
  const QString digits = QString(text).remove(':');
  const QByteArray bytes = QByteArray::fromHex(digits.toLatin1());
  // fromHex skips what is no digit.
  if (!text.isEmpty() && (digits.size() != 2 * size || bytes.size() != size)) return std::nullopt;
  return bytes;
}

QString ImageSuffix(const QByteArray& bytes) {
  if (bytes.startsWith("\x89PNG\r\n\x1a\n")) return QStringLiteral("png");
  if (bytes.startsWith("\xff\xd8\xff")) return QStringLiteral("jpg");
  return {};
}

}  // namespace corvane::map
