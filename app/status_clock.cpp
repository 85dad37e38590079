#include "app/status_clock.h"

#include <cstdio>

namespace corvane {

std::string StatusPrefix(const QDateTime& time) {
  const QDate date = time.date();
  const QTime clock = time.time();
  char text[64];
  const int length =
      std::snprintf(text, sizeof text, "[%d/%d/%d %d:%02d:%02d] ", date.month(), date.day(),
                    date.year(), clock.hour(), clock.minute(), clock.second());
  return {text, static_cast<std::size_t>(length)};
}

const std::string& StatusClock::Prefix(Time now) {
  const auto second = std::chrono::floor<std::chrono::seconds>(now);
  if (myPrefix.empty() || second != mySecond) {
    mySecond = second;
    myPrefix = StatusPrefix(QDateTime::fromSecsSinceEpoch(second.time_since_epoch().count()));
  }
  return myPrefix;
}

}  // namespace corvane
