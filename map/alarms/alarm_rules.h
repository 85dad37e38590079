#pragma once

#include <array>
#include <cstddef>

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QString>

namespace corvane::map {

enum class AlarmKind { LowHitPoints, Death, Battle, Silence, Circle };
inline constexpr std::size_t kAlarmKinds = 5;

// Whose events raise an alarm. Everybody includes the user.
enum class AlarmFor { Nobody, Own, Followed, OwnAndFollowed, Everybody };

// An area of the map that raises an alarm when somebody enters it.
struct AlarmCircle {
  static constexpr qsizetype kMaxName = 60;

  QString name;
  int facet = 0;
  QPoint centre;
  int radius = 1;

  bool Contains(QPoint place) const;
  bool operator==(const AlarmCircle&) const = default;
};

// What raises an alarm, and how the user hears of it.
struct AlarmRules {
  static constexpr qsizetype kMaxCircles = 20;
  static constexpr int kMinSilence = 5;
  static constexpr int kMaxSeconds = 86'400;

  std::array<AlarmFor, kAlarmKinds> who{AlarmFor::OwnAndFollowed, AlarmFor::OwnAndFollowed,
                                        AlarmFor::Nobody, AlarmFor::Nobody, AlarmFor::Everybody};
  // Hit points below this are low: in percent of the highest value seen, or a number of points.
  int hitPoints = 25;
  bool isShare = true;
  int silence = 120;  // in seconds
  int cooldown = 30;  // seconds between two alarms of a member and kind
  bool alertsWindow = true;
  bool notifies = false;
  bool beeps = false;
  QList<AlarmCircle> circles;

  AlarmFor& For(AlarmKind kind) { return who[static_cast<std::size_t>(kind)]; }
  AlarmFor For(AlarmKind kind) const { return who[static_cast<std::size_t>(kind)]; }

  bool operator==(const AlarmRules&) const = default;

  // All but the circles, which belong to one map, and those alone.
  QByteArray ToJson() const;
  QByteArray CirclesToJson() const;
  // What is missing or of a wrong type has its default; numbers beyond a limit are clamped.
  static AlarmRules FromJson(const QByteArray& json, const QByteArray& areas);
};

}  // namespace corvane::map
