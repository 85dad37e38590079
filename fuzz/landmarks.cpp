// Feeds files to FromGeoJson and messages to ParsePing: what they find is within its bounds, and
// reads back the same when written.

#include <cmath>
#include <cstdint>

#include "fuzz/expect.h"
#include "map/places/geo_json.h"
#include "map/places/ping.h"

using namespace corvane;
using namespace corvane::map;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
  const GeoJsonContent content = FromGeoJson(bytes);
  Expect(content.error.isEmpty() || (content.landmarks.isEmpty() && content.skipped == 0),
         "a file with an error has no landmarks");
  for (const Landmark& landmark : content.landmarks) {
    Expect(std::abs(landmark.at.x()) <= Landmark::kMaxCoordinate &&
               std::abs(landmark.at.y()) <= Landmark::kMaxCoordinate,
           "a landmark is on the map");
    Expect(landmark.name.size() <= Landmark::kMaxName && landmark.note.size() <= Landmark::kMaxNote,
           "texts are bounded");
  }
  const GeoJsonContent again = FromGeoJson(ToGeoJson(content.landmarks));
  Expect(again.landmarks == content.landmarks && again.skipped == 0,
         "landmarks read back the same");

  const QString message = QString::fromUtf8(bytes);
  const std::optional<Ping> ping = ParsePing(message);
  if (!ping) return 0;
  Expect(ping->word.size() <= Ping::kMaxWord * 2, "a word is bounded");
  Expect(ParsePing(ToMessage(*ping)) == ping, "a ping reads back the same");
  return 0;
}
