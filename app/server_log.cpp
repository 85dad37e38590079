#include "app/server_log.h"

#include <QDir>

namespace corvane {

namespace {

QString FileIn(const std::optional<QString>& dataFolder, const char* name) {
  return dataFolder ? QDir(*dataFolder).absoluteFilePath(QLatin1String(name)) : QString();
}

}  // namespace

ServerLog::ServerLog(const std::optional<QString>& dataFolder)
    : myFile(FileIn(dataFolder, "logs/corvane-server.log")),
      myAudit(FileIn(dataFolder, "logs/corvane-audit.log")) {}

void ServerLog::Write(std::string_view line) {
  const std::string whole = myClock.Prefix() + std::string(line);
  myFile.WriteLine(whole);
  Written(whole);
}

void ServerLog::WriteAudit(std::string_view line) {
  Write(line);
  myAudit.WriteLine(myClock.Prefix() + std::string(line));
}

void ServerLog::Reopen() {
  myFile.Reopen();
  myAudit.Reopen();
}

}  // namespace corvane
