#pragma once

#include <chrono>
#include <string>

#include <QDateTime>

namespace corvane {

// What stands before the text of a status line: "[3/7/2011 9:05:02] ".
std::string StatusPrefix(const QDateTime& time);

// The prefix of a time, in local time, for one time after another. Asking the system for its time
// zone costs more than the rest of a line, so the text is made once a second.
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
