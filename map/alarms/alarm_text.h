#pragma once

#include <QString>

#include "map/alarms/alarm_watch.h"

namespace corvane::map {

// A sentence for the messages: "Tamsin is down to 12 of 119 hit points".
QString SentenceOf(const Alarm& alarm, const AlarmRules& rules);

// What the map and the list show of a member with an alarm: "! In battle, low HP". Empty
// without one.
QString StateText(const AlarmState& state, const client::Report& report, const AlarmRules& rules);

}  // namespace corvane::map
