#include "map/places/place_link.h"

#include <QUrl>
#include <QUrlQuery>

#include "framework/text.h"

namespace corvane::map {
namespace {

constexpr QLatin1String kScheme("corvane");
constexpr qsizetype kLinkFingerprint = 32;

}  // namespace

bool IsPlaceLink(const QString& text) {
  return text.startsWith(kScheme + ':', Qt::CaseInsensitive);
}

QString ToPlaceLink(const Place& place) {
  const bool hasColons = place.host.contains(':');
  QString link = kScheme + "://" + (hasColons ? '[' + place.host + ']' : place.host) + ':' +
                 QString::number(place.port) + '/' +
                 QString::fromLatin1(place.network.toUtf8().toPercentEncoding());
  if (place.isEncrypted) link += QStringLiteral("?tls=1");
  if (place.isEncrypted && !place.fingerprint.isEmpty())
    link += QStringLiteral("&fingerprint=") + QString::fromLatin1(place.fingerprint.toHex());
  return link;
}

PlaceResult FromPlaceLink(const QString& link) {
  const QUrl url(link.left(kMaxPlaceLink + 1).trimmed());
  Place place;
  place.host = CheckedHost(url.host(QUrl::FullyEncoded));
  if (link.size() > kMaxPlaceLink || !url.isValid() || url.scheme() != kScheme ||
      place.host.isEmpty()) {
    return {{}, PlaceTexts::tr("This is not a link to a place.")};
  }
  // What stands before an @ can look like the host.
  if (!url.userInfo().isEmpty())
    return {{}, PlaceTexts::tr("A link to a place has no user and no password in it.")};
  const int port = url.port(place.port);
  if (port == 0) return {{}, PlaceTexts::tr("The port in this link is not one from 1 to 65535.")};
  place.port = static_cast<std::uint16_t>(port);

  const QByteArray path = url.path(QUrl::FullyEncoded).mid(1).toLatin1();
  place.network = DisplayText(QByteArray::fromPercentEncoding(path).toStdString());
  if (place.network.isEmpty() || place.network.size() > Place::kMaxNetwork)
    return {{}, PlaceTexts::tr("This link names no network, or one with too long a name.")};

  const QUrlQuery query(url);
  const QString tls = query.queryItemValue(QStringLiteral("tls"));
  const auto fingerprint =
      ParseDigits(query.queryItemValue(QStringLiteral("fingerprint")), kLinkFingerprint);
  if (!fingerprint || (!tls.isEmpty() && tls != "0" && tls != "1"))
    return {{}, PlaceTexts::tr("What this link says about encryption cannot be read.")};
  place.fingerprint = *fingerprint;
  place.isEncrypted = tls == "1" || !fingerprint->isEmpty();
  return {place};
}

}  // namespace corvane::map
