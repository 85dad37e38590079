#include "map/alarms/alarm_rules.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace corvane::map {
namespace {

constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr qsizetype kMaxJson = 64 * 1024;

void ReadNumber(const QJsonValue& json, int& number, int min, int max) {
  number = std::clamp(json.toInt(number), min, max);
}

AlarmCircle ReadCircle(const QJsonObject& json) {
  AlarmCircle circle;
  circle.name = json["name"].toString().left(AlarmCircle::kMaxName);
  circle.facet = json["facet"].toInt();
  circle.centre = {json["x"].toInt(), json["y"].toInt()};
  ReadNumber(json["radius"], circle.radius, 1, kMaxInt);
  return circle;
}

}  // namespace

bool AlarmCircle::Contains(QPoint place) const {
  const QPointF distance = QPointF(place) - QPointF(centre);
  return std::hypot(distance.x(), distance.y()) <= radius;
}

QByteArray AlarmRules::ToJson() const {
  QJsonArray whose;
  for (const AlarmFor one : who)
    whose.append(static_cast<int>(one));
  const QJsonObject json{{"who", whose},         {"hitPoints", hitPoints},
                         {"isShare", isShare},   {"silence", silence},
                         {"cooldown", cooldown}, {"alertsWindow", alertsWindow},
                         {"notifies", notifies}, {"beeps", beeps}};
  return QJsonDocument(json).toJson(QJsonDocument::Compact);
}

QByteArray AlarmRules::CirclesToJson() const {
  QJsonArray areas;
  for (const AlarmCircle& circle : circles) {
    areas.append(QJsonObject{{"name", circle.name},
                             {"facet", circle.facet},
                             {"x", circle.centre.x()},
                             {"y", circle.centre.y()},
                             {"radius", circle.radius}});
  }
  return QJsonDocument(areas).toJson(QJsonDocument::Compact);
}

AlarmRules AlarmRules::FromJson(const QByteArray& json, const QByteArray& areas) {
  AlarmRules rules;
  if (json.size() > kMaxJson || areas.size() > kMaxJson) return rules;
  const QJsonObject stored = QJsonDocument::fromJson(json).object();
  const QJsonArray whose = stored["who"].toArray();
  for (std::size_t kind = 0; kind < kAlarmKinds; ++kind) {
    int one = static_cast<int>(rules.who[kind]);
    ReadNumber(whose.at(static_cast<qsizetype>(kind)), one, 0,
               static_cast<int>(AlarmFor::Everybody));
    rules.who[kind] = static_cast<AlarmFor>(one);
  }
  rules.isShare = stored["isShare"].toBool(rules.isShare);
  ReadNumber(stored["hitPoints"], rules.hitPoints, 1, rules.isShare ? 100 : kMaxInt);
  ReadNumber(stored["silence"], rules.silence, kMinSilence, kMaxSeconds);
  ReadNumber(stored["cooldown"], rules.cooldown, 0, kMaxSeconds);
  rules.alertsWindow = stored["alertsWindow"].toBool(rules.alertsWindow);
  rules.notifies = stored["notifies"].toBool();
  rules.beeps = stored["beeps"].toBool();
  for (const auto& circle : QJsonDocument::fromJson(areas).array()) {
    if (rules.circles.size() < kMaxCircles) rules.circles.append(ReadCircle(circle.toObject()));
  }
  return rules;
}

}  // namespace corvane::map
