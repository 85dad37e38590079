#pragma once

#include <QPointF>

#include "client/members.h"

namespace corvane::map {

// Animates a marker from its shown position to the last reported one, at constant speed. The move
// takes as long as the time between the last two reports, within 0.1 to 1 s. Far jumps are
// immediate.
class Motion {
 public:
  explicit Motion(QPointF place) : myFrom(place), myTo(place) {}

  // Starts towards a newly reported position.
  void GoTo(QPointF place, client::Clock::time_point now);
  // Moves there at once.
  void JumpTo(QPointF place);

  QPointF At(client::Clock::time_point now) const;
  bool IsUnderway(client::Clock::time_point now) const { return now < myEnd; }
  QPointF Destination() const { return myTo; }

 private:
  QPointF myFrom;
  QPointF myTo;
  client::Clock::time_point myStart;
  client::Clock::time_point myEnd;
};

}  // namespace corvane::map
