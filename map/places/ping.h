#pragma once

#include <optional>

#include <QString>

namespace corvane::map {

// A place that an administrator shows everybody, sent as a message that people can read:
// "Camp: 1200, 845, facet 2".
struct Ping {
  static constexpr int kMaxWord = 40;

  QString word;
  int x = 0;
  int y = 0;
  int facet = 0;

  bool operator==(const Ping&) const = default;
};

QString ToMessage(const Ping& ping);
// None if the message has any other form, or the place is beyond the map's limits.
std::optional<Ping> ParsePing(const QString& message);

}  // namespace corvane::map
