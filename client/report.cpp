#include "client/report.h"

#include <array>
#include <charconv>
#include <span>

#include "client/wire.h"

namespace corvane::client {
namespace {

// The fields behind the name, which may hold a bar itself; none without a bar.
std::optional<std::string_view> Fields(std::string_view payload) {
  const std::size_t bar = payload.rfind('|');
  if (bar == std::string_view::npos) return std::nullopt;
  return payload.substr(bar + 1);
}

// Fills `numbers` from the text, which has to be exactly these numbers with commas between.
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

bool IsFlag(std::int32_t number) {
  return number == 0 || number == 1;
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
  const auto fields = Fields(payload);
  std::array<std::int32_t, 6> numbers{};
  if (!fields || !ReadNumbers(*fields, numbers) || !IsFlag(numbers[4]) || !IsFlag(numbers[5]))
    return std::nullopt;
  return MemberRecord{
      payload.substr(0, payload.size() - fields->size() - 1),
      {numbers[0], numbers[1], numbers[2], numbers[3], numbers[4] == 1, numbers[5] == 1}};
}

std::optional<MemberRecord> ParseListed(std::string_view payload) {
  const auto fields = Fields(payload);
  // The end is the same for everybody: a flag, a comma, a flag.
  constexpr std::size_t kFlags = 3;
  if (!fields || fields->size() < kFlags) return std::nullopt;
  const std::string_view flags = fields->substr(fields->size() - kFlags);
  const int inBattle = flags[0] - '0';
  const int isDead = flags[2] - '0';
  std::array<std::int32_t, 4> numbers{};
  if (!IsFlag(inBattle) || flags[1] != ',' || !IsFlag(isDead) ||
      !ReadNumbers(fields->substr(0, fields->size() - kFlags), numbers)) {
    return std::nullopt;
  }
  return MemberRecord{payload.substr(0, payload.size() - fields->size() - 1),
                      {numbers[0], numbers[1], numbers[2], numbers[3], inBattle == 1, isDead == 1}};
}

}  // namespace corvane::client
