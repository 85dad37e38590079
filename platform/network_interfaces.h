#pragma once

#include <string>
#include <vector>

namespace corvane {

struct NetworkInterface {
  std::string MACAddress;  // "00:1A:2B:3C:4D:5E", as the system reports it
  std::string IPAddress;   // IPv4, dotted

  bool operator==(const NetworkInterface&) const = default;
};

// The machine's IPv4 interfaces: on Windows in the order of GetAdaptersInfo; on Linux by index,
// without loopback interfaces and those that are down. An interface with several addresses is
// listed with the first.
std::vector<NetworkInterface> NetworkInterfaces();

}  // namespace corvane
