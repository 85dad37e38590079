#include "map/places/place_file.h"

#include <cmath>
#include <set>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "map/places/geo_json.h"

namespace corvane::map {
namespace {

constexpr int kFormat = 1;
constexpr qsizetype kMaxFileName = 255;
constexpr qsizetype kFingerprintSize = 32;
constexpr qsizetype kDigestSize = 16;

// Reads the values of an object. Error() has the first that is wrong.
class PlaceReader {
 public:
  explicit PlaceReader(const QJsonObject& root) : myRoot(root) {}

  Place Read() {
    Place place;
    place.host = CheckedHost(myRoot["host"].toString());
    Expect(!place.host.isEmpty(), "host");
    const int port = myRoot["port"].toInt();
    Expect(port >= 1 && port <= 65535, "port");
    place.port = static_cast<std::uint16_t>(port);
    Expect(myRoot["encrypted"].isBool(), "encrypted");
    place.isEncrypted = myRoot["encrypted"].toBool();
    place.fingerprint = Digits("fingerprint", kFingerprintSize);
    Expect(place.isEncrypted || place.fingerprint.isEmpty(), "fingerprint");
    place.network = myRoot["network"].toString();
    Expect(!place.network.isEmpty() && place.network.size() <= Place::kMaxNetwork &&
               place.network.isValidUtf16(),
           "network");
    place.digest = Digits("digest", kDigestSize);
    ReadPictures(place);
    ReadLandmarks(place);
    return place;
  }

  QString Error() const { return myError; }

 private:
  void Expect(bool holds, const char* what) {
    if (!holds && myError.isEmpty()) myError = QString::fromLatin1(what);
  }

  QByteArray Digits(const char* key, qsizetype size) {
    const QJsonValue value = myRoot[QLatin1String(key)];
    const auto bytes = ParseDigits(value.toString(), size);
    Expect(bytes && (value.isString() || value.isUndefined()), key);
    return bytes.value_or(QByteArray());
  }

  QJsonArray Array(const char* key, qsizetype max) {
    const QJsonValue value = myRoot[QLatin1String(key)];
    Expect((value.isArray() || value.isUndefined()) && value.toArray().size() <= max, key);
    return myError.isEmpty() ? value.toArray() : QJsonArray();
  }

  void ReadPictures(Place& place) {
    std::set<int> facets;
    for (const auto& value : Array("pictures", Place::kMaxPictures)) {
      const QJsonObject object = value.toObject();
      const auto isWithin = [&object](const char* key, double min, double max) {
        const QJsonValue number = object[QLatin1String(key)];
        return number.isDouble() && number.toDouble() >= min && number.toDouble() <= max;
      };
      const double max = PlacePicture::kMaxCorner;
      const auto image = QByteArray::fromBase64Encoding(object["image"].toString().toLatin1(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
      PlacePicture picture;
      picture.facet = object["facet"].toInt();
      picture.name = object["name"].toString().left(kMaxFileName);
      picture.bytes = image.decoded;
      picture.corner = {object["left"].toDouble(), object["top"].toDouble()};
      picture.unitsPerPixel = object["unitsPerPixel"].toDouble();
      Expect(image && !ImageSuffix(picture.bytes).isEmpty() &&
                 facets.insert(picture.facet).second && isWithin("left", -max, max) &&
                 isWithin("top", -max, max) &&
                 isWithin("unitsPerPixel", PlacePicture::kMinScale, PlacePicture::kMaxScale) &&
                 picture.name.isValidUtf16(),
             "pictures");
      place.pictures.append(std::move(picture));
    }
  }

  void ReadLandmarks(Place& place) {
    for (const auto& feature : Array("landmarks", Landmark::kMaxCount)) {
      const std::optional<Landmark> landmark = FromFeature(feature.toObject());
      Expect(landmark && landmark->name.isValidUtf16() && landmark->note.isValidUtf16() &&
                 landmark->icon.isValidUtf16(),
             "landmarks");
      if (landmark) place.landmarks.append(*landmark);
    }
  }

  const QJsonObject myRoot;  // reading another one would add the key
  QString myError;
};

}  // namespace

QByteArray ToPlaceFile(const Place& place) {
  QJsonObject root{{"format", kFormat},
                   {"host", place.host},
                   {"port", place.port},
                   {"encrypted", place.isEncrypted},
                   {"network", place.network}};
  if (!place.fingerprint.isEmpty())
    root["fingerprint"] = QString::fromLatin1(place.fingerprint.toHex());
  if (!place.digest.isEmpty()) root["digest"] = QString::fromLatin1(place.digest.toHex());
  QJsonArray pictures;
  for (const PlacePicture& picture : place.pictures) {
    pictures.append(QJsonObject{{"facet", picture.facet},
                                {"name", picture.name},
                                {"left", picture.corner.x()},
                                {"top", picture.corner.y()},
                                {"unitsPerPixel", picture.unitsPerPixel},
                                {"image", QString::fromLatin1(picture.bytes.toBase64())}});
  }
  if (!pictures.isEmpty()) root["pictures"] = pictures;
  QJsonArray landmarks;
  for (const Landmark& landmark : place.landmarks)
    landmarks.append(ToFeature(landmark));
  if (!landmarks.isEmpty()) root["landmarks"] = landmarks;
  return QJsonDocument(root).toJson();
}

PlaceResult FromPlaceFile(const QByteArray& json) {
  const auto fail = [](const QString& text) { return PlaceResult{{}, text}; };
  if (json.size() > kMaxPlaceFile)
    return fail(PlaceTexts::tr("The file is larger than %1 MiB.").arg(kMaxPlaceFile >> 20));
  if (!HasFewValues(json)) return fail(PlaceTexts::tr("The file holds too many values."));
  const QJsonObject root = QJsonDocument::fromJson(json).object();
  const double format = root["format"].toDouble();
  if (format < kFormat) return fail(PlaceTexts::tr("This is not a place file."));
  if (format > kFormat) {
    return fail(PlaceTexts::tr(
        "This place file was written by a newer version of Corvane Map. Update yours to open it."));
  }
  PlaceReader reader(root);
  Place place = reader.Read();
  if (!reader.Error().isEmpty())
    return fail(PlaceTexts::tr("The place file is damaged: \"%1\" is missing or wrong.")
                    .arg(reader.Error()));
  return {std::move(place)};
}

}  // namespace corvane::map
