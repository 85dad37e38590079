#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::swarm {

// What a player tells of itself, and what the server relays of the others.
struct PositionReport {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t facet = 0;
  std::int32_t hp = 0;
  bool inBattle = false;
  bool isDead = false;

  bool operator==(const PositionReport&) const = default;
};

// Appends the report as a player sends it, as one message.
void AppendReport(std::string& output, const PositionReport& report);

struct Relay {
  std::string_view user;
  PositionReport report;
};

// Reads a relayed report, "user|x,y,facet,hp,battle,dead"; none if the payload is anything else.
std::optional<Relay> ParseRelay(std::string_view payload);

}  // namespace corvane::swarm
