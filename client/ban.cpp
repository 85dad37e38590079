#include "client/ban.h"

#include <optional>

#include "framework/numbers.h"
#include "framework/text.h"

namespace corvane::client {
namespace {

std::optional<Ban> ParseBan(std::string_view entry) {
  constexpr std::size_t kFields = 5;
  if (CountFields(entry, '|') < kFields) return std::nullopt;
  Ban ban;
  ban.id = NthField(entry, '|', 1);
  ban.address = NthField(entry, '|', 2);
  ban.by = NthField(entry, '|', 3);
  if (!IsNumeric(ban.id)) return std::nullopt;
  entry.remove_prefix(ban.id.size() + ban.address.size() + ban.by.size() + 3);
  const std::size_t bar = entry.rfind('|');
  ban.reason = entry.substr(0, bar);
  ban.date = entry.substr(bar + 1);
  return ban;
}

}  // namespace

BanList ParseBans(std::string_view payload) {
  BanList list;
  while (!payload.empty()) {
    const std::size_t end = payload.find('\0');
    const std::string_view entry = payload.substr(0, end);
    payload.remove_prefix(end == std::string_view::npos ? payload.size() : end + 1);
    std::optional<Ban> ban;
    if (list.bans.size() < kMaxBans) ban = ParseBan(entry);
    if (ban) {
      list.bans.push_back(*std::move(ban));
    } else {
      ++list.leftOut;
    }
  }
  return list;
}

}  // namespace corvane::client
