#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <QString>

#include "app/log_file.h"
#include "app/status_clock.h"
#include "framework/signal.h"

namespace corvane {

// What the operator may want to read later: the status lines, who did what, and what the database
// refused, each with its time, in logs/corvane-server.log of the data folder. What operator and
// administrators did stands in logs/corvane-audit.log, too, which nobody else can fill.
class ServerLog {
 public:
  // Without a folder nothing is kept.
  explicit ServerLog(const std::optional<QString>& dataFolder);

  // Event: a line was added, as it is in the file.
  Signal<const std::string&> Written;

  // A line as LogLine makes it.
  void Write(std::string_view line);
  // The same, for the audit, too.
  void WriteAudit(std::string_view line);

  // Opens the files again, as another program may have put others in their places.
  void Reopen();
  std::vector<std::string> Last(std::size_t count) { return myFile.Last(count); }

 private:
  StatusClock myClock;
  LogFile myFile;
  LogFile myAudit;
};

}  // namespace corvane
