#include "control/server_log.h"

#include <QDir>

#include "framework/visible_text.h"

namespace corvane {

ServerLog::ServerLog(const std::optional<QString>& dataFolder)
    : myFile(dataFolder ? QDir(*dataFolder).absoluteFilePath("logs/corvane-server.log")
                        : QString()) {}

void ServerLog::Write(std::string_view text) {
  std::string line = myClock.Prefix();
  line += text;
  myFile.WriteLine(line);
  if (Written) Written(Escaped(line));
}

}  // namespace corvane
