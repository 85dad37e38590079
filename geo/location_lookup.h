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

// Looks up the location of client addresses: the texts from a locator service's page or from a
// file, the flag's picture from a flag service. The picture goes into the file "cv_flag.gif" in the
// temporary folder, which all clients share. A lookup does not wait for its own picture but takes
// the present one, usually an earlier client's. Faults of a service are not reported and leave the
// known location unchanged.
//
// Owns the flag downloads and the location file's copy. Lookups in progress borrow it and must not
// outlive it. No call waits for a service.
//
// Limits: 2 s for a page, 30 s for a flag, 1 MiB for each. At most 64 flags are downloaded at once;
// further clients get no download. The picture is not decoded here.
class LocationLookup {
 public:
  using Found = std::function<void(const ClientLocation&)>;

  // `userAgent` is sent to the services; the picture's file is in `temporaryFolder`.
  LocationLookup(const std::string& userAgent, const QString& temporaryFolder);
  ~LocationLookup();

  // Sets the services' base addresses ("http://host" or "https://host/folder") from the next lookup
  // on. A service with an empty address, the default, is not asked.
  void SetServices(const std::string& locatorAddress, const std::string& flagAddress);

  // Sets the mmdb file to use without a locator service; an empty name means none. Reads it before
  // returning, which takes some hundred milliseconds, and again whenever it changes.
  void SetDatabase(const QString& file);

  // Event: a line for the operator about the location file, which also goes to standard error.
  std::function<void(const std::string&)> Logged;

  // Calls `found` exactly once with the `known` location of the address, updated by what was found.
  // Without a locator service the call comes from inside Find, which returns null; otherwise it
  // comes from the event loop within two seconds. Destroying the result cancels the lookup; `found`
  // may do so.
  [[nodiscard]] std::unique_ptr<HttpTransfer> Find(const std::string& address,
                                                   const ClientLocation& known, Found found);

  // Since the start: pages that the locator service was asked for, and those that did not come.
  std::uint64_t Lookups() const { return myLookups; }
  std::uint64_t FailedLookups() const { return myFailedLookups; }

 private:
  void StartFlagDownload(const std::string& address);
  // The file's content, empty if there is none. As long as it does not change, all clients share
  // one copy in memory.
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
  std::uint64_t myLookups = 0;
  std::uint64_t myFailedLookups = 0;
};

}  // namespace corvane
