#include "map/motion.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace corvane::map {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kMinDuration{100};
constexpr milliseconds kMaxDuration{1000};
constexpr double kLeap = 250;  // map units

}  // namespace

void Motion::GoTo(QPointF place, client::Clock::time_point now) {
  const auto since = std::chrono::duration_cast<milliseconds>(now - myStart);
  const QPointF shown = At(now);
  if (place == myTo) return;
  if (std::hypot(place.x() - shown.x(), place.y() - shown.y()) > kLeap) {
    JumpTo(place);
    myStart = now;
    return;
  }
  myFrom = shown;
  myTo = place;
  myStart = now;
  myEnd = now + std::clamp(since, kMinDuration, kMaxDuration);
}

void Motion::JumpTo(QPointF place) {
  myFrom = myTo = place;
  myEnd = myStart;
}

QPointF Motion::At(client::Clock::time_point now) const {
  if (now >= myEnd) return myTo;
  if (now <= myStart) return myFrom;
  const double done = std::chrono::duration<double>(now - myStart) / (myEnd - myStart);
  return myFrom + (myTo - myFrom) * done;
}

}  // namespace corvane::map
