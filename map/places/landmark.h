#pragma once

#include <cstddef>
#include <cstdint>

#include <QCoreApplication>
#include <QHash>
#include <QPointF>
#include <QString>

namespace corvane::map {

// Of the sentences that this folder makes.
struct PlaceTexts {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PlaceTexts)
};

// A place on the map that a user has marked and named.
struct Landmark {
  static constexpr int kMaxName = 100;      // characters
  static constexpr int kMaxNote = 500;      // characters
  static constexpr int kMaxCount = 10'000;  // in a network
  // In map units from the origin, as for members.
  static constexpr double kMaxCoordinate = 1 << 24;

  QString name;
  QString icon;                       // a name of kLandmarkIcons; others are drawn as a pin
  std::uint32_t colour = 0xffd0342c;  // a QRgb, opaque
  QString note;
  int facet = 0;
  QPointF at{};

  bool operator==(const Landmark&) const = default;
};

inline std::size_t qHash(const Landmark& landmark, std::size_t seed = 0) {
  return qHashMulti(seed, landmark.name, landmark.note, landmark.facet, landmark.at.x(),
                    landmark.at.y());
}

}  // namespace corvane::map
