#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QStaticText>
#include <QString>

#include "client/members.h"
#include "map/motion.h"

namespace corvane::map {

// The limit of the map, in map units from its origin. Members beyond it are shown at its edge.
inline constexpr double kMaxCoordinate = 1 << 24;

// The length of a name that the map shows, in characters.
inline constexpr std::size_t kMaxNameLength = 40;

// A member as the map shows it.
struct Marker {
  explicit Marker(const client::Member& whom);

  const client::Member* member;
  std::string memberName;  // that `name` was made from
  QString name;            // escaped and shortened
  int facet;
  Motion motion;
  QPointF place;  // as of the last Advance
  std::int32_t hp;
  std::int32_t maxHp;    // the highest seen
  bool isStale = false;  // no news for a minute, or the connection is lost
  bool isMoving = false;
  bool hasTrail = false;
  std::deque<QPointF> trail;  // the oldest place first
  bool showsLabel = false;
  bool showsSign = false;              // of an alarm
  QRect labelPlace;                    // relative to the marker
  bool hasLeader = false;              // a line to a label that is not beside the marker
  std::unique_ptr<QStaticText> label;  // name and hit points; null until they are first shown
  bool isLabelOld = false;
};

// The markers of all members that have a place, on all facets. Animates them between reports. A
// pointer to a marker is valid until its member is removed or loses its place. Borrows the members.
class MarkerBoard : public client::MembersWatcher {
 public:
  static constexpr std::size_t kTrailPlaces = 500;

  explicit MarkerBoard(client::Members& members);
  ~MarkerBoard() override;
  MarkerBoard(const MarkerBoard&) = delete;
  MarkerBoard& operator=(const MarkerBoard&) = delete;

  // Raised before the marker is removed.
  std::function<void(const client::Member&)> MemberRemoved;

  // Moves the markers to their positions at that time. Returns whether the facet looks different
  // from the last call.
  bool Advance(client::Clock::time_point now, int facet);

  // Null if the member has no place.
  Marker* Find(const client::Member* member);
  // The member of that name, if it has a place; else null. Letter case does not matter.
  const client::Member* MemberNamed(const std::string& name) const;
  // In the order of arrival, which is also the drawing order.
  const std::vector<Marker*>& All() const { return myOrder; }
  // The bounding rectangle of the facet's markers; null if there are none.
  QRectF Extent(int facet) const;
  // Starts a new trail, or ends it. Does nothing if the member has no place.
  void SetTrail(const client::Member& member, bool isOn);

  void Added(const client::Member& member) override;
  void Changed(const client::Member& member) override;
  void Removed(const client::Member& member) override;

 private:
  void RemoveMarker(const client::Member& member);

  client::Members& myMembers;
  std::unordered_map<const client::Member*, std::unique_ptr<Marker>> myMarkers;
  std::vector<Marker*> myOrder;
  std::vector<Marker*> myMoving;
  bool myHasChanged = false;
  client::Clock::time_point myNextStaleCheck{};
};

}  // namespace corvane::map
