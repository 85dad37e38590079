// Feeds bytes to the readers of place files and links: what they accept is within the bounds, and
// is the same when it is written and read again.

#include <cmath>
#include <cstdint>

#include "fuzz/expect.h"
#include "map/places/place_file.h"
#include "map/places/place_link.h"

using namespace corvane;
using namespace corvane::map;

namespace {

void Check(const PlaceResult& read) {
  Expect(read.place.has_value() == read.error.isEmpty(), "a place or an error");
  if (!read.place) return;
  const Place& place = *read.place;
  Expect(!place.host.isEmpty() && place.host.size() <= 255, "a host");
  Expect(CheckedHost(place.host) == place.host, "the host's one form");
  Expect(place.port > 0, "a port");
  Expect(!place.network.isEmpty() && place.network.size() <= Place::kMaxNetwork, "a network");
  Expect(place.fingerprint.isEmpty() || (place.fingerprint.size() == 32 && place.isEncrypted),
         "a fingerprint");
  Expect(place.digest.isEmpty() || place.digest.size() == 16, "a digest");
  Expect(place.pictures.size() <= Place::kMaxPictures, "few pictures");
  Expect(place.landmarks.size() <= Landmark::kMaxCount, "few landmarks");
  for (const PlacePicture& picture : place.pictures) {
    Expect(std::abs(picture.corner.x()) <= PlacePicture::kMaxCorner &&
               std::abs(picture.corner.y()) <= PlacePicture::kMaxCorner &&
               picture.unitsPerPixel >= PlacePicture::kMinScale &&
               picture.unitsPerPixel <= PlacePicture::kMaxScale,
           "a picture's position");
    Expect(!ImageSuffix(picture.bytes).isEmpty(), "a picture's format");
  }
  for (const Landmark& landmark : place.landmarks) {
    Expect(std::abs(landmark.at.x()) <= Landmark::kMaxCoordinate &&
               std::abs(landmark.at.y()) <= Landmark::kMaxCoordinate &&
               landmark.name.size() <= Landmark::kMaxName &&
               landmark.note.size() <= Landmark::kMaxNote,
           "a landmark");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
  const PlaceResult file = FromPlaceFile(bytes);
  Check(file);
  if (file.place)
    Expect(FromPlaceFile(ToPlaceFile(*file.place)).place == file.place, "the file reads back");

  const PlaceResult link = FromPlaceLink(QString::fromUtf8(bytes));
  Check(link);
  if (link.place) {
    const QString written = ToPlaceLink(*link.place);
    Expect(written.size() > kMaxPlaceLink || FromPlaceLink(written).place == link.place,
           "the link reads back");
  }
  return 0;
}
