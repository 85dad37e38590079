#pragma once

#include <QString>

#include "map/places/place.h"

// A place as a link: corvane://HOST:PORT/NETWORK?tls=1&fingerprint=HEX. It has no password, no
// pictures and no landmarks. The network's name is percent-encoded, an IPv6 address in brackets.
// Without a port it is 12000, without "tls" and "fingerprint" the connection is not encrypted.
// Other keys are ignored.
namespace corvane::map {

inline constexpr qsizetype kMaxPlaceLink = 2048;  // characters

// Whether the text has the scheme of such links.
bool IsPlaceLink(const QString& text);
QString ToPlaceLink(const Place& place);
PlaceResult FromPlaceLink(const QString& link);

}  // namespace corvane::map
