#include "updater/version_checker.h"

#include <chrono>
#include <optional>
#include <utility>

#include <QStandardPaths>

#include "updater/update_catalogue.h"
#include "updater/update_platform.h"
#include "updater/version.h"

namespace corvane {
namespace {

constexpr std::chrono::seconds kTimeout{5};
constexpr std::int64_t kMaxReplyBytes = 1024 * 1024;

}  // namespace

VersionChecker::VersionChecker(std::string serverAddress, std::string appName, HttpClient& http,
                               MessageBoxFunction showMessage)
    : DownloadLocation(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation)),
      UseActualFilename(DefaultUseActualFilename()),
      mServerAddress(std::move(serverAddress)),
      mAppName(std::move(appName)),
      myHttp(http),
      myShowMessage(std::move(showMessage)) {}

void VersionChecker::CheckForNewVersion(bool quiet) {
  if (myCheck) return;
  HttpRequest request;
  request.url = AddressBelow(mServerAddress, "/applications.xml");
  request.timeout = kTimeout;
  request.maxBytes = kMaxReplyBytes;
  myCheck = myHttp.Get(std::move(request),
                       [this, quiet](const HttpReply& reply) { Decide(reply, quiet); });
}

void VersionChecker::Decide(const HttpReply& reply, bool quiet) {
  myCheck.reset();
  // The body of a failed request is empty, so it has no entry.
  const std::optional<CatalogueEntry> entry =
      FindInCatalogue({reply.body.constData(), static_cast<std::size_t>(reply.body.size())},
                      mAppName, DownloadElement());
  if (entry && RunningVersion().build < entry->Build()) {
    UpdateFound({mAppName, entry->FullVersion(), entry->changes, entry->download, DownloadLocation,
                 UseActualFilename});
  } else if (!quiet) {
    // A copy, because it may destroy this object.
    const MessageBoxFunction showMessage = myShowMessage;
    showMessage(
        {MessageBox::Kind::Message, {}, "You have the most recent version of " + mAppName + "."});
  }
}

}  // namespace corvane
