#pragma once

#include <memory>
#include <string>

#include <QString>

#include "framework/http_client.h"
#include "framework/message_box.h"
#include "framework/signal.h"

namespace corvane {

// A newer release, and where its installer is to go.
struct Update {
  std::string appName;
  std::string newVersion;  // as the catalogue has it
  std::string changes;
  std::string downloadURL;  // empty: there is no installer for this system
  QString downloadLocation;
  bool useActualFilename = false;
};

// Asks the update service whether there is a newer release than the running one. Borrows the HTTP
// client; destroying the checker ends a check that is under way. An event may destroy the checker.
class VersionChecker {
 public:
  // `serverAddress` is the service's base address, with slashes at its end or without; an empty
  // one means that nothing is asked.
  VersionChecker(std::string serverAddress, std::string appName, HttpClient& http,
                 MessageBoxFunction showMessage);

  // Looks into the service's catalogue and comes back at once; five seconds later at most there is
  // an UpdateFound, or, unless `quiet`, a message that this is the most recent release. A check
  // that failed reads so too: this is deliberate. Does nothing while a check is under way.
  void CheckForNewVersion(bool quiet);

  // Called from the event loop. Only the build numbers decide what is newer.
  Signal<const Update&> UpdateFound;

  // Where the installer is to be saved, and whether under its name in the download address.
  QString DownloadLocation;
  bool UseActualFilename;

 private:
  void Decide(const HttpReply& reply, bool quiet);

  const std::string mServerAddress;
  const std::string mAppName;
  HttpClient& myHttp;
  const MessageBoxFunction myShowMessage;
  std::unique_ptr<HttpTransfer> myCheck;
};

}  // namespace corvane
