#include "map/marker_board.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {
namespace {

using client::Clock;
using client::Member;

constexpr std::chrono::minutes kStaleAfter{1};
constexpr std::chrono::seconds kStaleCheckInterval{1};

QPointF PlaceOf(const Member& member) {
  const auto held = [](std::int32_t at) {
    return std::clamp(static_cast<double>(at), -kMaxCoordinate, kMaxCoordinate);
  };
  return {held(member.report.x), held(member.report.y)};
}

}  // namespace

Marker::Marker(const Member& whom)
    : member(&whom),
      memberName(whom.name),
      name(VisibleText(whom.name, kMaxNameLength)),
      facet(whom.report.facet),
      motion(PlaceOf(whom)),
      place(PlaceOf(whom)),
      hp(whom.report.hp),
      maxHp(whom.report.hp) {}

MarkerBoard::MarkerBoard(client::Members& members) : myMembers(members) {
  myMembers.Watch(*this);
}

MarkerBoard::~MarkerBoard() {
  myMembers.Unwatch(*this);
}

bool MarkerBoard::Advance(Clock::time_point now, int facet) {
  bool isOtherPicture = std::exchange(myHasChanged, false);
  std::erase_if(myMoving, [&](Marker* marker) {
    marker->place = marker->motion.At(now);
    isOtherPicture |= marker->facet == facet;
    marker->isMoving = marker->motion.IsUnderway(now);
    return !marker->isMoving;
  });
  // A replay's time also goes back.
  if (now < myNextStaleCheck && now >= myNextStaleCheck - kStaleCheckInterval)
    return isOtherPicture;
  myNextStaleCheck = now + kStaleCheckInterval;
  for (Marker* marker : myOrder) {
    const bool isStale = !myMembers.IsCurrent() || now - marker->member->news >= kStaleAfter;
    if (std::exchange(marker->isStale, isStale) != isStale) isOtherPicture = true;
  }
  return isOtherPicture;
}

Marker* MarkerBoard::Find(const Member* member) {
  const auto place = myMarkers.find(member);
  return place == myMarkers.end() ? nullptr : place->second.get();
}

const Member* MarkerBoard::MemberNamed(const std::string& name) const {
  for (const Marker* marker : myOrder) {
    if (SameText(marker->member->name, name)) return marker->member;
  }
  return nullptr;
}

QRectF MarkerBoard::Extent(int facet) const {
  QRectF extent;
  for (const Marker* marker : myOrder) {
    if (marker->facet != facet) continue;
    // QRectF ignores empty rectangles when it unites them.
    extent |= QRectF(marker->motion.Destination() - QPointF(0.5, 0.5), QSizeF(1, 1));
  }
  return extent;
}

void MarkerBoard::SetTrail(const Member& member, bool isOn) {
  Marker* marker = Find(&member);
  if (marker == nullptr) return;
  marker->hasTrail = isOn;
  marker->trail.clear();
  if (isOn) marker->trail.push_back(marker->motion.Destination());
  myHasChanged = true;
}

void MarkerBoard::Added(const Member& member) {
  if (!member.hasPlace) return;
  auto marker = std::make_unique<Marker>(member);
  myOrder.push_back(marker.get());
  myMarkers.emplace(&member, std::move(marker));
  myHasChanged = true;
}

void MarkerBoard::Changed(const Member& member) {
  if (!member.hasPlace) return RemoveMarker(member);
  Marker* const known = Find(&member);
  if (known == nullptr) return Added(member);
  Marker& marker = *known;
  const QPointF place = PlaceOf(member);
  if (marker.memberName != member.name) {
    marker.memberName = member.name;
    marker.name = VisibleText(member.name, kMaxNameLength);
    marker.isLabelOld = true;
  }
  marker.isLabelOld |= marker.hp != member.report.hp;
  marker.hp = member.report.hp;
  marker.maxHp = std::max(marker.maxHp, marker.hp);
  marker.isStale = false;
  if (marker.facet == member.report.facet) {
    marker.motion.GoTo(place, member.news);
  } else {
    marker.facet = member.report.facet;
    marker.motion.JumpTo(place);
    marker.trail.clear();
    myHasChanged = true;
  }
  if (marker.hasTrail && (marker.trail.empty() || marker.trail.back() != place)) {
    marker.trail.push_back(place);
    if (marker.trail.size() > kTrailPlaces) marker.trail.pop_front();
  }
  if (!std::exchange(marker.isMoving, true)) myMoving.push_back(&marker);
}

void MarkerBoard::Removed(const Member& member) {
  if (MemberRemoved) MemberRemoved(member);
  RemoveMarker(member);
}

void MarkerBoard::RemoveMarker(const Member& member) {
  const auto place = myMarkers.find(&member);
  if (place == myMarkers.end()) return;
  std::erase(myOrder, place->second.get());
  std::erase(myMoving, place->second.get());
  myMarkers.erase(place);
  myHasChanged = true;
}

}  // namespace corvane::map
