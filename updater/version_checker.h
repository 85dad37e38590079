#pragma once

#include <memory>
#include <string>

#include <QString>

#include "framework/http_client.h"
#include "framework/message_box.h"
#include "framework/signal.h"

namespace corvane {

// A newer release and the destination of its installer.
struct Update {
  std::string appName;
  std::string newVersion;  // as written in the catalogue
  std::string changes;
  std::string downloadURL;  // empty: there is no installer for this system
  QString downloadLocation;
  bool useActualFilename = false;
};

// Asks the update service whether there is a newer release than the running one; one check at a
// time. Borrows the HTTP client. Destroying the checker cancels a check in progress; the event and
// the message box may do so.
class VersionChecker {
 public:
  // `serverAddress` is the service's base address, with or without slashes at its end. If it is
  // empty, no request is sent.
  VersionChecker(std::string serverAddress, std::string appName, HttpClient& http,
                 MessageBoxFunction showMessage);

  // Starts a check and returns at once. Within five seconds it raises UpdateFound or, unless
  // `quiet`, shows a message that this is the most recent release. A failed check shows the same
  // message; this is deliberate. Does nothing if a check is in progress.
  void CheckForNewVersion(bool quiet);

  // Raised from the event loop. Only the build numbers are compared.
  Signal<const Update&> UpdateFound;

  // Where to save the installer, and whether under the name in its address.
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
