#pragma once

#include <QByteArray>

#include "map/places/place.h"

// A place as a file: JSON with the keys "format" (1), "host", "port", "encrypted", "fingerprint"
// and "digest" (in hexadecimal digits), "network", "pictures" and "landmarks" (GeoJSON Features).
// A picture has "facet", "name", "left", "top", "unitsPerPixel" and "image", a PNG or JPEG file in
// base64. Other keys are ignored; a file with a wrong value is refused as a whole.
namespace corvane::map {

inline constexpr qsizetype kMaxPlaceFile = 64 << 20;  // bytes

QByteArray ToPlaceFile(const Place& place);
PlaceResult FromPlaceFile(const QByteArray& json);

}  // namespace corvane::map
