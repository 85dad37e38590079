#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

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

// The lines of the status log, one after the other in one arena of bytes: a line costs its bytes
// and one number. There is no limit but memory.
class StatusLog {
 public:
  // The two texts together are the new last line.
  void Append(std::string_view prefix, std::string_view text);
  void Clear();

  std::size_t Count() const { return myEnds.size(); }
  // Valid until the log changes.
  std::string_view Line(std::size_t number) const;

 private:
  std::string myBytes;
  std::vector<std::size_t> myEnds;  // of line n in myBytes
};

}  // namespace corvane
