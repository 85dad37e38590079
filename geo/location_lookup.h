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
// into a file; and asks a flag service for a picture, which goes into the file "cv_flag.gif". That
// file is the same for all clients, and a lookup does not wait for its own picture: it takes the
// one that is there, as a rule that of an earlier client. What goes wrong with a service is not
// told.
class LocationLookup {
 public:
  using Found = std::function<void(const ClientLocation&)>;

  // `userAgent` is what the services are told; the picture's file lies in `temporaryFolder`.
  LocationLookup(const std::string& userAgent, const QString& temporaryFolder);
  ~LocationLookup();

  // Where the services are, as "http://host" or "https://host/folder". One that is empty, as both
  // are at first, is not asked.
  void SetServices(const std::string& locatorAddress, const std::string& flagAddress);

  // The mmdb file that is looked into where there is no locator service; reads it. No file: none.
  void SetDatabase(const QString& file);

  // Event: what the operator has to know of the database. It goes to standard error in any case.
  std::function<void(const std::string&)> Told;

  // Calls `found` once, with what was `known` about the dotted IPv4 address and is not found anew:
  // at once where there is no locator service, else within two seconds from the event loop.
  // Destroying the result cancels that; `found` may do so. There is none when `found` was called
  // at once.
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
