#include <arpa/inet.h>
#include <array>
#include <ifaddrs.h>
#include <map>
#include <net/if.h>

#include <gtest/gtest.h>

#include "framework/network_interfaces.h"

namespace corvane {
namespace {

TEST(NetworkInterfaces, AreTheMachinesOwnInIndexOrder) {
  std::map<unsigned, std::string> expected;  // address by index
  ifaddrs* list = nullptr;
  ASSERT_EQ(getifaddrs(&list), 0);
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET) continue;
    if ((entry->ifa_flags & IFF_UP) == 0 || (entry->ifa_flags & IFF_LOOPBACK) != 0) continue;
    std::array<char, INET_ADDRSTRLEN> text{};
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(entry->ifa_addr)->sin_addr,
              text.data(), text.size());
    expected.emplace(if_nametoindex(entry->ifa_name), text.data());
  }
  freeifaddrs(list);

  std::vector<std::string> addresses;
  for (const NetworkInterface& device : NetworkInterfaces())
    addresses.push_back(device.IPAddress);
  std::vector<std::string> expectedAddresses;
  expectedAddresses.reserve(expected.size());
  for (const auto& [index, address] : expected)
    expectedAddresses.push_back(address);
  EXPECT_EQ(addresses, expectedAddresses);
}

}  // namespace
}  // namespace corvane
