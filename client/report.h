#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::client {

// What a player tells of itself, and what the server tells of the others.
struct Report {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t facet = 0;
  std::int32_t hp = 0;
  bool inBattle = false;
  bool isDead = false;

  bool operator==(const Report&) const = default;
};

// Appends the report as a player sends it, as one message.
void AppendReport(std::string& output, const Report& report);

// What the server tells of one member. The name points into what was read.
struct MemberRecord {
  std::string_view name;
  Report report;
};

// Reads a relayed report, "name|x,y,facet,hp,battle,dead"; none if the payload is anything else.
std::optional<MemberRecord> ParseRelay(std::string_view payload);

// Reads a record of the list of members, "name|x,y,facet,hpbattle,dead": nothing stands between
// the hit points and the flag of one digit. None if the payload is anything else.
std::optional<MemberRecord> ParseListed(std::string_view payload);

}  // namespace corvane::client
