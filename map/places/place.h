#pragma once

#include <cstdint>
#include <optional>

#include <QByteArray>
#include <QList>
#include <QPointF>
#include <QString>

#include "map/places/landmark.h"

namespace corvane::map {

// The picture of a facet and its position on the map, with the bytes of its image file.
struct PlacePicture {
  static constexpr double kMaxCorner = 1e9;
  static constexpr double kMinScale = 0.0001;
  static constexpr double kMaxScale = 10'000;

  int facet = 0;
  QString name;  // of the file it came from, for people; never part of a path
  QByteArray bytes;
  QPointF corner{};  // top left, in map units
  double unitsPerPixel = 1;

  bool operator==(const PlacePicture&) const = default;
};

// What a group shares: the server, the network, and what its map shows.
struct Place {
  static constexpr int kMaxNetwork = 255;  // characters
  static constexpr int kMaxPictures = 32;

  QString host;
  std::uint16_t port = 12000;
  bool isEncrypted = false;
  QByteArray fingerprint{};  // SHA-256 of the certificate to trust; empty if authorities decide
  QString network{};
  QByteArray digest{};  // MD5 of the password; empty if it is not shared
  QList<PlacePicture> pictures{};
  QList<Landmark> landmarks{};

  bool operator==(const Place&) const = default;
};

// A place from a stranger's file or link, or a sentence that says why there is none.
struct PlaceResult {
  std::optional<Place> place;
  QString error{};
};

// The host name or address in the one form that is compared and shown: lower case, names in ASCII
// (RFC 5891), IPv6 without brackets. Empty if the text is neither.
QString CheckedHost(const QString& text);

// The bytes of a text with two hexadecimal digits for each, with or without colons. Empty for an
// empty text, none for another length than `size` bytes or other characters.
std::optional<QByteArray> ParseDigits(const QString& text, qsizetype size);

// "png" or "jpg" by how the image file begins. Empty for others, which no place has.
QString ImageSuffix(const QByteArray& bytes);

}  // namespace corvane::map
