#include "control/server_log.h"

#include <QDir>

namespace corvane {

ServerLog::ServerLog(const std::optional<QString>& dataFolder)
    : myFile(dataFolder ? QDir(*dataFolder).absoluteFilePath("logs/corvane-server.log")
                        : QString()) {}

void ServerLog::Write(std::string_view line) {
  const std::string whole = myClock.Prefix() + std::string(line);
  myFile.WriteLine(whole);
  if (Written) Written(whole);
}

}  // namespace corvane
