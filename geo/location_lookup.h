#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include <QByteArray>
#include <QString>

#include "framework/http_client.h"
#include "geo/client_location.h"
#include "geo/location_database.h"

namespace corvane {

// Looks up the location of client addresses: asks a locator service for a page of texts, or looks
// into a file; and asks a flag service for a picture, which goes into the file "cv_flag.gif" in the
// temporary folder. That file is the same for all clients, and a lookup does not wait for its own
// picture: it takes the one that is there, as a rule that of an earlier client. What goes wrong
// with a service is not told, and leaves what was known.
//
// Owns the downloads of flags and the location file's copy. Borrowed by the lookups that are under
// way, which must not outlive it. No call waits for a service.
//
// Limits: a page has 2 s, a flag 30 s, each 1 MiB. At most 64 flags are downloaded at once; for
// clients beyond that none is fetched. A picture is a GIF or BMP of at most 512 pixels each way;
// anything else is none.
class LocationLookup {
 public:
  using Found = std::function<void(const ClientLocation&)>;

  // `userAgent` is what the services are told; the picture's file lies in `temporaryFolder`.
  LocationLookup(const std::string& userAgent, const QString& temporaryFolder);
  ~LocationLookup();

  // Where the services are from the next lookup on, as "http://host" or "https://host/folder". One
  // that is empty, as both are at first, is not asked.
  void SetServices(const std::string& locatorAddress, const std::string& flagAddress);

  // The mmdb file that is looked into where there is no locator service. Reads it before returning,
  // which takes some hundred milliseconds, and by itself again when it changes. An empty name:
  // none.
  void SetDatabase(const QString& file);

  // Event: a line for the operator about the location file. It goes to standard error in any case.
  std::function<void(const std::string&)> Told;

  // Calls `found` exactly once, with what is `known` about the dotted IPv4 address and in place of
  // it what was found: from inside Find where there is no locator service, and the result is null;
  // otherwise from the event loop, within two seconds. Destroying the result cancels that; `found`
  // may do so.
  [[nodiscard]] std::unique_ptr<HttpTransfer> Find(const std::string& address,
                                                   const ClientLocation& known, Found found);

 private:
  void StartFlagDownload(const std::string& address);
  // Empty where there is none. What the file holds, as long as that is the same, stands in memory
  // once for all clients.
  const QByteArray& FlagInFile();

  const QString myTemporaryFolder;
  const QString myFlagFile;
  HttpClient myPages;
  HttpClient myFlags;
  std::unique_ptr<LocationDatabase> myDatabase;
  std::string myLocatorAddress;
  std::string myFlagAddress;
  std::map<std::uint64_t, std::unique_ptr<HttpTransfer>> myDownloads;
  std::uint64_t myDownloadNumber = 0;
  QByteArray myFlag;
};

}  // namespace corvane
