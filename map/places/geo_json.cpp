#include "map/places/geo_json.h"

#include <cmath>

#include <QJsonArray>
#include <QJsonDocument>

namespace corvane::map {
namespace {

constexpr std::uint32_t kOpaque = 0xff000000;
constexpr int kMaxIconName = 32;
// Landmark::kMaxCount landmarks have a quarter.
constexpr int kMaxValues = 500'000;

QString ColourText(std::uint32_t colour) {
  return QStringLiteral("#%1").arg(colour & ~kOpaque, 6, 16, QLatin1Char('0'));
}

std::uint32_t ParseColour(const QString& text) {
  bool isNumber = false;
  const std::uint32_t colour = text.mid(1).toUInt(&isNumber, 16);
  const bool isColour = isNumber && text.size() == 7 && text[0] == '#' && colour <= ~kOpaque;
  return isColour ? kOpaque | colour : Landmark().colour;
}

// The text as UTF-8 can hold it, without half a character at its end.
QString Readable(QString text, int maxLength) {
  text.truncate(maxLength);
  if (!text.isEmpty() && text.back().isHighSurrogate()) text.chop(1);
  return QString::fromUtf8(text.toUtf8());
}

bool IsOnMap(double coordinate) {
  return std::abs(coordinate) <= Landmark::kMaxCoordinate;
}

}  // namespace

bool HasFewValues(const QByteArray& json) {
  int values = 0;
  bool isInText = false;
  for (qsizetype i = 0; i < json.size() && values <= kMaxValues; ++i) {
    const char byte = json[i];
    if (isInText && byte == '\\') {
      ++i;
    } else if (byte == '"') {
      isInText = !isInText;
    } else if (!isInText && (byte == ',' || byte == '[' || byte == '{')) {
      ++values;
    }
  }
  return values <= kMaxValues;
}

QJsonObject ToFeature(const Landmark& landmark) {
  return {{"type", "Feature"},
          {"geometry", QJsonObject{{"type", "Point"},
                                   {"coordinates", QJsonArray{landmark.at.x(), landmark.at.y()}}}},
          {"properties", QJsonObject{{"name", landmark.name},
                                     {"icon", landmark.icon},
                                     {"colour", ColourText(landmark.colour)},
                                     {"note", landmark.note},
                                     {"facet", landmark.facet}}}};
}

std::optional<Landmark> FromFeature(const QJsonObject& feature) {
  const QJsonObject geometry = feature["geometry"].toObject();
  const QJsonArray position = geometry["coordinates"].toArray();
  if (feature["type"] != QLatin1String("Feature") || geometry["type"] != QLatin1String("Point") ||
      position.size() < 2 || !position[0].isDouble() || !position[1].isDouble()) {
    return std::nullopt;
  }
  const QJsonObject properties = feature["properties"].toObject();
  Landmark landmark;
  landmark.at = {position[0].toDouble(), position[1].toDouble()};
  if (!IsOnMap(landmark.at.x()) || !IsOnMap(landmark.at.y())) return std::nullopt;
  landmark.name = Readable(properties["name"].toString(), Landmark::kMaxName);
  landmark.icon = Readable(properties["icon"].toString(), kMaxIconName);
  landmark.colour = ParseColour(properties["colour"].toString());
  landmark.note = Readable(properties["note"].toString(), Landmark::kMaxNote);
  landmark.facet = properties["facet"].toInt();
  return landmark;
}

QByteArray ToGeoJson(const QList<Landmark>& landmarks) {
  QJsonArray features;
  for (const Landmark& landmark : landmarks)
    features.append(ToFeature(landmark));
  return QJsonDocument(QJsonObject{{"type", "FeatureCollection"}, {"features", features}})
      .toJson(QJsonDocument::Compact);
}

GeoJsonContent FromGeoJson(const QByteArray& json) {
  GeoJsonContent content;
  if (!HasFewValues(json)) {
    content.error = PlaceTexts::tr("it holds too many values");
    return content;
  }
  QJsonParseError error;
  const QJsonObject root = QJsonDocument::fromJson(json, &error).object();
  if (error.error != QJsonParseError::NoError) {
    content.error =
        PlaceTexts::tr("it is no JSON: %1, at byte %2").arg(error.errorString()).arg(error.offset);
    return content;
  }
  if (root["type"] != QLatin1String("FeatureCollection") || !root["features"].isArray()) {
    content.error = PlaceTexts::tr("it is no GeoJSON FeatureCollection");
    return content;
  }
  for (const auto& feature : root["features"].toArray()) {
    std::optional<Landmark> landmark;
    if (content.landmarks.size() < Landmark::kMaxCount) landmark = FromFeature(feature.toObject());
    if (landmark) {
      content.landmarks.append(*std::move(landmark));
    } else {
      ++content.skipped;
    }
  }
  return content;
}

}  // namespace corvane::map
