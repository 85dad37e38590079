#pragma once

#include <optional>

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include "map/places/landmark.h"

// Landmarks as GeoJSON (RFC 7946). A position is [x, y] in the players' own units, not longitude
// and latitude. A landmark is a Feature with a Point and the properties name, icon, colour
// ("#rrggbb"), note and facet.
namespace corvane::map {

// Of a file to import, in bytes. Landmark::kMaxCount with the longest notes fit.
inline constexpr qsizetype kMaxGeoJson = 20 << 20;

// Whether a JSON text may be parsed: a value takes up to a hundred times the memory of its text.
// (Qt bounds the depth itself.)
bool HasFewValues(const QByteArray& json);

QJsonObject ToFeature(const Landmark& landmark);
// None if it is not a Feature with a Point within the map's limits. Missing or wrong properties get
// their defaults; texts that are too long are cut.
std::optional<Landmark> FromFeature(const QJsonObject& feature);

QByteArray ToGeoJson(const QList<Landmark>& landmarks);

struct GeoJsonContent {
  QList<Landmark> landmarks;  // at most Landmark::kMaxCount
  qsizetype skipped = 0;      // features that are no landmarks, or too many
  QString error;              // if this is no FeatureCollection, or too much; empty otherwise
};
// The caller bounds the size.
GeoJsonContent FromGeoJson(const QByteArray& json);

}  // namespace corvane::map
