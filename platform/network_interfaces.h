#pragma once

#include <string>
#include <vector>

namespace corvane {

struct NetworkInterface {
  std::string MACAddress;  // "00:1A:2B:3C:4D:5E", as the system reports it
  std::string IPAddress;   // IPv4, dotted

  bool operator==(const NetworkInterface&) const = default;
};

// The machine's IPv4 interfaces in the system's order: GetAdaptersInfo's on Windows; on Linux by
// index, without loopback interfaces and those that are down. Of several addresses of an interface
// the first is given.
std::vector<NetworkInterface> NetworkInterfaces();

}  // namespace corvane
