#include "tools/swarm/position_report.h"

#include <array>
#include <charconv>

#include "tools/swarm/wire.h"

namespace corvane::swarm {

void AppendReport(std::string& output, const PositionReport& report) {
  // Four numbers of up to 11 characters, two flags, five commas.
  std::array<char, 64> text;
  char* end = text.data();
  char* const limit = text.data() + text.size();
  const auto append = [&](std::int32_t value) {
    if (end != text.data() && end != limit) *end++ = ',';
    end = std::to_chars(end, limit, value).ptr;
  };
  append(report.x);
  append(report.y);
  append(report.facet);
  append(report.hp);
  append(report.inBattle ? 1 : 0);
  append(report.isDead ? 1 : 0);
  AppendFrame(output, command::kReport,
              std::string_view(text.data(), static_cast<std::size_t>(end - text.data())));
}

std::optional<Relay> ParseRelay(std::string_view payload) {
  // The last bar: a user name may hold one itself.
  const std::size_t bar = payload.rfind('|');
  if (bar == std::string_view::npos) return std::nullopt;
  const char* next = payload.data() + bar + 1;
  const char* const end = payload.data() + payload.size();

  std::array<std::int32_t, 6> fields{};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (i > 0 && (next == end || *next++ != ',')) return std::nullopt;
    const auto parsed = std::from_chars(next, end, fields[i]);
    if (parsed.ec != std::errc()) return std::nullopt;
    next = parsed.ptr;
  }
  const auto isFlag = [](std::int32_t field) { return field == 0 || field == 1; };
  if (next != end || !isFlag(fields[4]) || !isFlag(fields[5])) return std::nullopt;
  return Relay{payload.substr(0, bar),
               {fields[0], fields[1], fields[2], fields[3], fields[4] == 1, fields[5] == 1}};
}

}  // namespace corvane::swarm
