#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::client {

// A player's position and condition. Clients send their own; the server relays it to the others.
struct Report {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t facet = 0;
  std::int32_t hp = 0;
  bool inBattle = false;
  bool isDead = false;

  bool operator==(const Report&) const = default;
};

// Appends a message with the report, as a client sends it.
void AppendReport(std::string& output, const Report& report);

// A member's report as the server sends it. The name points into the parsed payload and may hold
// bars.
struct MemberRecord {
  std::string_view name;
  Report report;
};

// Reads a relayed report, "name|x,y,facet,hp,battle,dead". None if the payload has another form.
std::optional<MemberRecord> ParseRelay(std::string_view payload);

// Reads an entry of the member list, "name|x,y,facet,hpbattle,dead", which has no comma between the
// hit points and the one-digit flag. None if the payload has another form.
std::optional<MemberRecord> ParseListed(std::string_view payload);

}  // namespace corvane::client
