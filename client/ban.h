#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::client {

// An entry of the server's ban list. The fields are the server's text, unchecked but for `id`,
// which is a number.
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
  // Malformed entries, and those beyond kMaxBans. A reason can break an entry, since it may hold
  // the byte that ends one.
  std::size_t leftOut = 0;
};

inline constexpr std::size_t kMaxBans = 20'000;

// Reads entries "id|address|by|reason|date", each terminated by a zero byte. A reason may hold
// bars.
BanList ParseBans(std::string_view payload);

}  // namespace corvane::client
