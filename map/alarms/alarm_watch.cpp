#include "map/alarms/alarm_watch.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

#include "framework/text.h"
#include "map/alarms/alarm_text.h"

namespace corvane::map {
namespace {

using client::Member;
using client::Report;
using std::chrono::seconds;

// The system slept, or the clock was set, if Advance() was not called for as long.
constexpr seconds kMaxGap{10};
// There are few, unless many circles overlap.
constexpr std::size_t kMaxTexts = 1000;

}  // namespace

AlarmWatch::AlarmWatch(client::Members& members, std::function<Time()> now)
    : myMembers(members), myNow(std::move(now)), myLastWalk(myNow()) {
  myMembers.Watch(*this);
}

AlarmWatch::~AlarmWatch() {
  myMembers.Unwatch(*this);
}

void AlarmWatch::SetRules(AlarmRules rules) {
  myRules = std::move(rules);
  myRules.circles.resize(std::min(myRules.circles.size(), AlarmRules::kMaxCircles));
  myTexts.clear();
  for (auto& [member, known] : myKnown)
    known.state = Judge(known, myNow());
}

void AlarmWatch::TakeOwn(const std::optional<Report>& report) {
  if (report) {
    Take(nullptr, *report);
  } else {
    myKnown.erase(nullptr);
  }
}

bool AlarmWatch::Advance() {
  const Time now = myNow();
  const auto gap = now - std::exchange(myLastWalk, now);
  // Without a connection nobody can be heard.
  const bool isDeaf = gap < seconds(0) || gap > kMaxGap || !myMembers.IsCurrent();
  for (auto& [member, known] : myKnown) {
    if (known.state.Has(AlarmKind::Silence)) continue;
    if (isDeaf) known.heard = now;
    known.state = Judge(known, now);
    if (!known.state.Has(AlarmKind::Silence)) continue;
    myHasChanged = true;
    Raise(AlarmKind::Silence, member, known, now);
  }
  return std::exchange(myHasChanged, false);
}

AlarmState AlarmWatch::StateOf(const Member* member) const {
  const auto place = myKnown.find(member);
  if (place == myKnown.end() || (member != nullptr && !myMembers.IsCurrent())) return {};
  AlarmState state = place->second.state;
  for (std::size_t kind = 0; kind < kAlarmKinds; ++kind) {
    if (state.kinds.test(kind) && !Covers(static_cast<AlarmKind>(kind), member))
      state.kinds.reset(kind);
  }
  if (!state.Has(AlarmKind::Circle)) state.circles.reset();
  return state;
}

QString AlarmWatch::TextOf(const Member* member, const Report& report) const {
  const AlarmState state = StateOf(member);
  std::uint64_t key = state.circles.to_ullong();
  key = key << kAlarmKinds | state.kinds.to_ullong();
  key = key << 2 | (report.isDead ? 2U : 0U) | (report.inBattle ? 1U : 0U);
  if (myTexts.size() >= kMaxTexts) myTexts.clear();
  const auto [place, isNew] = myTexts.try_emplace(key);
  if (isNew) place->second = StateText(state, report, myRules);
  return place->second;
}

void AlarmWatch::Added(const Member& member) {
  if (member.hasPlace) Take(&member, member.report);
}

void AlarmWatch::Changed(const Member& member) {
  member.hasPlace ? Take(&member, member.report) : Removed(member);
}

void AlarmWatch::Removed(const Member& member) {
  const auto place = myKnown.find(&member);
  if (place == myKnown.end()) return;
  if (myGone.size() >= client::Members::kMaxMembers) myGone.clear();
  myGone.insert_or_assign(FoldText(member.name), place->second.history);
  myKnown.erase(place);
}

void AlarmWatch::Take(const Member* member, const Report& report) {
  const Time now = myNow();
  const auto [place, isNew] = myKnown.try_emplace(member);
  // What was so before the user came, or came back.
  const bool isOld = isNew || (member != nullptr && !myMembers.IsCurrent());
  Known& known = place->second;
  if (isNew && member != nullptr) {
    const auto gone = myGone.extract(FoldText(member->name));
    if (gone) known.history = gone.mapped();
  }
  known.report = report;
  known.heard = now;
  known.hasChanged = !isOld;
  known.history.highest = std::max(known.history.highest, report.hp);
  const AlarmState before = std::exchange(known.state, Judge(known, now));
  myHasChanged |= known.state != before;
  if (isOld) return;
  for (const AlarmKind kind : {AlarmKind::LowHitPoints, AlarmKind::Death, AlarmKind::Battle}) {
    if (known.state.Has(kind) && !before.Has(kind)) Raise(kind, member, known, now);
  }
  const auto entered = known.state.circles & ~before.circles;
  for (qsizetype i = 0; i < myRules.circles.size(); ++i) {
    if (entered.test(static_cast<std::size_t>(i)))
      Raise(AlarmKind::Circle, member, known, now, &myRules.circles[i]);
  }
}

AlarmState AlarmWatch::Judge(const Known& known, Time now) const {
  const Report& report = known.report;
  const std::int64_t highest = known.history.highest;
  const std::int64_t hp = report.hp;
  const bool isLow = myRules.isShare ? hp * 100 < highest * myRules.hitPoints
                                     : hp < std::int64_t{myRules.hitPoints};
  AlarmState state;
  // A member that never had any does not report them.
  state.Set(AlarmKind::LowHitPoints, isLow && highest > 0 && !report.isDead);
  state.Set(AlarmKind::Death, report.isDead);
  state.Set(AlarmKind::Battle, report.inBattle);
  state.Set(AlarmKind::Silence, known.hasChanged && now - known.heard >= seconds(myRules.silence));
  for (qsizetype i = 0; i < myRules.circles.size(); ++i) {
    const AlarmCircle& circle = myRules.circles[i];
    if (circle.facet == report.facet && circle.Contains({report.x, report.y}))
      state.circles.set(static_cast<std::size_t>(i));
  }
  state.Set(AlarmKind::Circle, state.circles.any());
  return state;
}

bool AlarmWatch::Covers(AlarmKind kind, const Member* member) const {
  const AlarmFor who = myRules.For(kind);
  if (who == AlarmFor::Everybody) return true;
  const bool includesBoth = who == AlarmFor::OwnAndFollowed;
  if (member == nullptr) return includesBoth || who == AlarmFor::Own;
  return (includesBoth || who == AlarmFor::Followed) && IsFollowed(*member);
}

void AlarmWatch::Raise(AlarmKind kind, const Member* member, Known& known, Time now,
                       const AlarmCircle* circle) {
  if (!Covers(kind, member)) return;
  std::optional<Time>& last = known.history.raised[static_cast<std::size_t>(kind)];
  // A clock that went back ends the cooldown.
  if (last && *last <= now && now - *last < seconds(myRules.cooldown)) return;
  last = now;
  if (Raised) Raised({kind, member, known.report, known.history.highest, circle});
}

}  // namespace corvane::map
