#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// Addresses are compared as texts, so each has only one: dotted for IPv4, that of RFC 5952 for
// IPv6. An IPv6 address that stands for an IPv4 one (::ffff:192.0.2.1) has the IPv4 text, so that
// bans of that apply.

// The text of an address of 4 or 16 bytes in network order.
std::string AddressFromBytes(std::string_view bytes);

// The text of an address in any spelling. None for any other text, also for one that only some
// programs read as an IPv4 address (10.1, 010.0.0.1).
std::optional<std::string> AddressFromText(std::string_view text);

// What one client has to itself: an IPv4 address, but the /64 of an IPv6 one (2001:db8::/64).
std::string ClientRange(const std::string& address);

}  // namespace corvane
