#pragma once

#include <chrono>
#include <string>

#include <QDateTime>

namespace corvane {

// The prefix of a status line: "[3/7/2011 9:05:02] ".
std::string StatusPrefix(const QDateTime& time);

// Makes the prefix of status lines, in local time. Converts to local time only once a second, since
// that costs more than the rest of a line.
class StatusClock {
 public:
  using Time = std::chrono::system_clock::time_point;

  // Valid until the next call.
  const std::string& Prefix(Time now = std::chrono::system_clock::now());

 private:
  std::chrono::sys_seconds mySecond;
  std::string myPrefix;
};

}  // namespace corvane
