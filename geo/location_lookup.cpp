#include "geo/location_lookup.h"

#include <chrono>
#include <utility>

#include <QUrl>

#include "geo/location_page.h"
#include "geo/plain_file.h"
#include "platform/standard_error.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kPageManagers = 8;
constexpr auto kPageTimeout = 2s;
constexpr auto kFlagTimeout = 30s;
constexpr std::int64_t kMaxBytes = 1024 * 1024;
constexpr std::size_t kMaxFlagDownloads = 64;

// A request whose query ends with the client's address.
HttpRequest RequestAbout(const std::string& address, std::string_view service,
                         const std::string& pathAndQuery, std::chrono::milliseconds timeout) {
  const QByteArray encoded = QUrl::toPercentEncoding(QString::fromStdString(address));
  HttpRequest request;
  request.url = AddressBelow(service, pathAndQuery + encoded.toStdString());
  request.timeout = timeout;
  request.maxBytes = kMaxBytes;
  return request;
}

}  // namespace

LocationLookup::LocationLookup(const std::string& userAgent, const QString& temporaryFolder)
    : myTemporaryFolder(temporaryFolder),
      myFlagFile(temporaryFolder + "/cv_flag.gif"),
      myPages(userAgent, kPageManagers),
      myFlags(userAgent) {}

LocationLookup::~LocationLookup() = default;

void LocationLookup::SetServices(const std::string& locatorAddress,
                                 const std::string& flagAddress) {
  myLocatorAddress = locatorAddress;
  myFlagAddress = flagAddress;
}

void LocationLookup::SetDatabase(const QString& file) {
  myDatabase.reset();
  if (file.isEmpty()) return;
  myDatabase =
      std::make_unique<LocationDatabase>(file, myTemporaryFolder, [this](const std::string& text) {
        WriteErrorLine(text);
        if (Logged) Logged(text);
      });
}

std::unique_ptr<HttpTransfer> LocationLookup::Find(const std::string& address,
                                                   const ClientLocation& known, Found found) {
  const auto finish = [this, address, found = std::move(found)](ClientLocation location) {
    if (!myFlagAddress.empty()) {
      StartFlagDownload(address);
      // The file as it is now, without waiting for the download: deliberate.
      if (const QByteArray& flag = FlagInFile(); !flag.isEmpty()) location.flag = flag;
    }
    found(location);
  };
  if (myLocatorAddress.empty()) {
    ClientLocation location = known;
    if (myDatabase) myDatabase->Find(address, location);
    finish(std::move(location));
    return nullptr;
  }
  ++myLookups;
  return myPages.Get(
      RequestAbout(address, myLocatorAddress,
                   "/IpLocator.htm?GetLocation&template=php3.txt&IpAddress=", kPageTimeout),
      [this, known, finish](const HttpReply& page) {
        if (!page.succeeded) ++myFailedLookups;
        ClientLocation location = known;
        ReadLocationPage({page.body.constData(), static_cast<std::size_t>(page.body.size())},
                         location);
        finish(std::move(location));
      });
}

void LocationLookup::StartFlagDownload(const std::string& address) {
  // Clients that arrive faster than the service answers get no download.
  if (myDownloads.size() >= kMaxFlagDownloads) return;
  HttpRequest request = RequestAbout(address, myFlagAddress, "/flag.php?ip=", kFlagTimeout);
  request.file = myFlagFile;
  const std::uint64_t number = ++myDownloadNumber;
  myDownloads[number] = myFlags.Get(
      std::move(request), [this, number](const HttpReply&) { myDownloads.erase(number); });
}

const QByteArray& LocationLookup::FlagInFile() {
  QByteArray bytes = ReadPlainFile(myFlagFile, kMaxBytes).value_or(QByteArray());
  if (bytes != myFlag) myFlag = std::move(bytes);
  return myFlag;
}

}  // namespace corvane
