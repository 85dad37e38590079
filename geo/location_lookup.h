#pragma once

#include <functional>
#include <string>

#include <QImage>

namespace corvane {

// Where a client's address is, as far as it is known. Empty texts and a null picture are unknown.
struct ClientLocation {
  std::string country;
  std::string state;
  std::string city;
  std::string zip;
  std::string timeZone;
  QImage flag;
};

// Looks up the location of client addresses.
class LocationLookup {
 public:
  using Found = std::function<void(const ClientLocation&)>;

  // Calls `found` exactly once, with what is known about the dotted IPv4 address: at once while no
  // location host is configured, since then nothing is asked and nothing is known.
  void Find(const std::string& address, const Found& found);
};

}  // namespace corvane
