#include "console/status_log.h"

#include <cassert>
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

void StatusLog::Append(std::string_view prefix, std::string_view text) {
  myBytes.append(prefix).append(text);
  myEnds.push_back(myBytes.size());
}

void StatusLog::Clear() {
  // Fresh objects, so that the memory of a long log is given back.
  myBytes = {};
  myEnds = {};
}

std::string_view StatusLog::Line(std::size_t number) const {
  assert(number < myEnds.size());
  const std::size_t begin = number == 0 ? 0 : myEnds[number - 1];
  return std::string_view(myBytes).substr(begin, myEnds[number] - begin);
}

}  // namespace corvane
