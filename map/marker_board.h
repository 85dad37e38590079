#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include <QPointF>
#include <QRectF>
#include <QStaticText>
#include <QString>

#include "client/members.h"
#include "map/motion.h"

namespace corvane::map {

// Farther out nothing is drawn; a member beyond is shown at the edge.
inline constexpr double kMaxCoordinate = 1 << 24;

// A member as the map shows it.
struct Marker {
  explicit Marker(const client::Member& whom);

  const client::Member* member;
  QString name;  // as it is shown
  int facet;
  Motion motion;
  QPointF place;         // as of the last Advance
  bool isStale = false;  // without news for a minute
  bool isMoving = false;
  bool hasTrail = false;
  std::deque<QPointF> trail;  // the oldest place first
  bool showsLabel = false;
  QPoint labelPlace;  // beside the marker, of the left and top
  // The name and the hit points, laid out when first shown.
  std::unique_ptr<QStaticText> label;
};

// The markers of all members that have a place, on whichever facet. Moves them between reports.
class MarkerBoard : public client::MembersWatcher {
 public:
  static constexpr std::size_t kTrailPlaces = 500;

  explicit MarkerBoard(client::Members& members);
  ~MarkerBoard() override;
  MarkerBoard(const MarkerBoard&) = delete;
  MarkerBoard& operator=(const MarkerBoard&) = delete;

  // A member has gone; the marker is still there.
  std::function<void(const client::Member&)> MemberRemoved;

  // Moves everybody to where they are at that time. Returns whether the picture of that facet has
  // changed since the last call.
  bool Advance(client::Clock::time_point now, int facet);

  // Null where the member has no place yet.
  Marker* Find(const client::Member* member);
  // In the order in which they came, so that what is drawn over what stays the same.
  const std::vector<Marker*>& All() const { return myOrder; }
  // The smallest rectangle that holds everybody on the facet; null where nobody is.
  QRectF Extent(int facet) const;
  // Does nothing where the member has no place yet.
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
  client::Clock::time_point myNextStaleCheck{};  // for those who have become stale
};

}  // namespace corvane::map
