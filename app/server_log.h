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

// The server's log, logs/corvane-server.log in the data folder: status lines, actions with their
// actors, and errors of the database, each with its time. Actions of the operator and the
// administrators also go to logs/corvane-audit.log, which clients cannot flood.
class ServerLog {
 public:
  // Without a folder nothing is written.
  explicit ServerLog(const std::optional<QString>& dataFolder);

  // Event: a line was added. The text is the line in the file.
  Signal<const std::string&> Written;

  // Writes a line as LogLine makes it.
  void Write(std::string_view line);
  // The same, and to the audit log.
  void WriteAudit(std::string_view line);

  // Opens the files again, for programs that rotate logs.
  void Reopen();
  // Lines that the file has not taken, since the start.
  std::uint64_t Dropped() const { return myFile.Dropped() + myAudit.Dropped(); }
  std::vector<std::string> Last(std::size_t count) { return myFile.Last(count); }

 private:
  StatusClock myClock;
  LogFile myFile;
  LogFile myAudit;
};

}  // namespace corvane
