#pragma once

#include <QPointF>

#include "client/members.h"

namespace corvane::map {

// A way from where something is shown to where it was last said to be, at an even pace that takes
// about as long as the next report does to come. Leaps are not walked.
class Motion {
 public:
  explicit Motion(QPointF place) : myFrom(place), myTo(place) {}

  // A report has come.
  void GoTo(QPointF place, client::Clock::time_point now);
  // Arrives at once.
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
