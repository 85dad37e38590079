#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

#include "client/members.h"
#include "map/alarms/alarm_rules.h"

namespace corvane::map {

// What is alarming about a member now.
struct AlarmState {
  std::bitset<kAlarmKinds> kinds;
  std::bitset<AlarmRules::kMaxCircles> circles;  // that the member is in

  void Set(AlarmKind kind, bool isOn) { kinds.set(static_cast<std::size_t>(kind), isOn); }
  bool Has(AlarmKind kind) const { return kinds.test(static_cast<std::size_t>(kind)); }
  bool IsAny() const { return kinds.any(); }

  bool operator==(const AlarmState&) const = default;
};

// Something that has just happened to a member.
struct Alarm {
  AlarmKind kind;
  const client::Member* member;  // null: the user
  const client::Report& report;
  int highest;                // hit points seen of the member
  const AlarmCircle* circle;  // that it has entered; null for other kinds
};

// Compares the reports of the members and of the user with the rules, and raises alarms. A member's
// first report raises none, nor does the first list after a login: both show what was so before.
// Each report costs the same however many members there are; Advance() walks over all.
//
// Borrows the members. A member that leaves and returns keeps its highest hit points and the times
// of its alarms; those of the last kMaxMembers at most are kept.
class AlarmWatch : public client::MembersWatcher {
 public:
  using Time = client::Clock::time_point;

  AlarmWatch(client::Members& members, std::function<Time()> now);
  ~AlarmWatch() override;
  AlarmWatch(const AlarmWatch&) = delete;
  AlarmWatch& operator=(const AlarmWatch&) = delete;

  // Valid in the call only. The handler must not change the members or the rules.
  std::function<void(const Alarm&)> Raised;
  // Must be set.
  std::function<bool(const client::Member&)> IsFollowed;

  // Raises no alarms for what the new rules find.
  void SetRules(AlarmRules rules);
  const AlarmRules& Rules() const { return myRules; }

  // The user's own report, or none while there is none.
  void TakeOwn(const std::optional<client::Report>& report);
  // Finds silent members. Call it once a second. After a jump of the clock, or a long time without
  // a call, or while there is no connection, the silence of each member counts from now. Returns
  // whether a state has changed since the last call.
  bool Advance();
  // Forgets members that have left, since the same names mean others in another network.
  void ForgetGone() { myGone.clear(); }

  // As far as the rules ask for it. Null: the user's.
  AlarmState StateOf(const client::Member* member) const;
  // The state of somebody with that report as StateText() puts it.
  QString TextOf(const client::Member* member, const client::Report& report) const;

  void Added(const client::Member& member) override;
  void Changed(const client::Member& member) override;
  void Removed(const client::Member& member) override;

 private:
  struct History {
    int highest = 0;
    std::array<std::optional<Time>, kAlarmKinds> raised;
  };
  struct Known {
    History history;
    client::Report report;
    Time heard;
    bool hasChanged = false;  // since the first report, so that the time of its news is known
    AlarmState state;
  };

  void Take(const client::Member* member, const client::Report& report);
  AlarmState Judge(const Known& known, Time now) const;
  bool Covers(AlarmKind kind, const client::Member* member) const;
  void Raise(AlarmKind kind, const client::Member* member, Known& known, Time now,
             const AlarmCircle* circle = nullptr);

  client::Members& myMembers;
  std::function<Time()> myNow;
  AlarmRules myRules;
  std::unordered_map<const client::Member*, Known> myKnown;    // null: the user
  std::unordered_map<std::string, History> myGone;             // by folded name
  mutable std::unordered_map<std::uint64_t, QString> myTexts;  // each is asked for in every frame
  Time myLastWalk;
  bool myHasChanged = false;
};

}  // namespace corvane::map
