#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::client {

// An entry of the server's ban list. The fields are the server's texts; only `id` is checked to be
// a number.
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
  // Number of malformed entries and of those beyond kMaxBans. A reason may contain the byte that
  // ends an entry, which makes the entry malformed.
  std::size_t leftOut = 0;
};

inline constexpr std::size_t kMaxBans = 20'000;

// Reads entries "id|address|by|reason|date", each terminated by a zero byte. A reason may hold
// bars.
BanList ParseBans(std::string_view payload);

}  // namespace corvane::client
