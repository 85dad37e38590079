#include "client/report.h"

#include <array>
#include <charconv>
#include <span>

#include "client/wire.h"

namespace corvane::client {
namespace {

// Fills `numbers` from comma-separated text. False if the text holds anything else.
bool ReadNumbers(std::string_view text, std::span<std::int32_t> numbers) {
  const char* next = text.data();
  const char* const end = next + text.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0 && (next == end || *next++ != ',')) return false;
    const auto parsed = std::from_chars(next, end, numbers[i]);
    if (parsed.ec != std::errc()) return false;
    next = parsed.ptr;
  }
  return next == end;
}

using Numbers = std::array<std::int32_t, 6>;

// None unless the last two numbers are flags.
std::optional<MemberRecord> ToRecord(std::string_view name, const Numbers& numbers) {
  const auto isFlag = [](std::int32_t number) { return number == 0 || number == 1; };
  if (!isFlag(numbers[4]) || !isFlag(numbers[5])) return std::nullopt;
  return MemberRecord{
      name, {numbers[0], numbers[1], numbers[2], numbers[3], numbers[4] == 1, numbers[5] == 1}};
}

}  // namespace

void AppendReport(std::string& output, const Report& report) {
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

std::optional<MemberRecord> ParseRelay(std::string_view payload) {
  const std::size_t bar = payload.rfind('|');
  Numbers numbers{};
  if (bar == std::string_view::npos || !ReadNumbers(payload.substr(bar + 1), numbers))
    return std::nullopt;
  return ToRecord(payload.substr(0, bar), numbers);
}

std::optional<MemberRecord> ParseListed(std::string_view payload) {
  const std::size_t bar = payload.rfind('|');
  // The last three characters are a flag, a comma and a flag.
  constexpr std::size_t kFlags = 3;
  if (bar == std::string_view::npos || payload.size() - bar <= kFlags) return std::nullopt;
  const std::string_view flags = payload.substr(payload.size() - kFlags);
  payload.remove_suffix(kFlags);
  Numbers numbers{0, 0, 0, 0, flags[0] - '0', flags[2] - '0'};
  if (flags[1] != ',' || !ReadNumbers(payload.substr(bar + 1), std::span(numbers).first(4)))
    return std::nullopt;
  return ToRecord(payload.substr(0, bar), numbers);
}

}  // namespace corvane::client
