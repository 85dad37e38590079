#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::client {

// One entry of the server's list of bans, as the server wrote it.
struct Ban {
  std::string id;
  std::string address;
  std::string by;
  std::string reason;
  std::string date;

  bool operator==(const Ban&) const = default;
};

struct BanList {
  std::vector<Ban> bans;
  // Entries that are none: a reason may hold the byte that ends an entry, and nothing but the
  // server's memory bounds their number.
  std::size_t leftOut = 0;
};

inline constexpr std::size_t kMaxBans = 20'000;

// Reads entries "id|address|by|reason|date", each ended by a byte of 0. A reason may hold bars.
BanList ParseBans(std::string_view payload);

}  // namespace corvane::client
