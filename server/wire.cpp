#include "server/wire.h"

#include <array>
#include <charconv>

#include "server/client_socket.h"

namespace corvane::wire {
namespace {

constexpr std::size_t kMaxDigits = 11;  // "-2147483648"

void AppendNumber(std::string& text, std::int32_t number) {
  std::array<char, kMaxDigits> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  text.append(digits.data(), end);
}

std::string Record(const ClientSocket& member, std::string_view behindHP) {
  std::string record;
  record.reserve(member.Username().size() + 4 * (kMaxDigits + 1) + 4);
  record += member.Username();
  record += '|';
  AppendNumber(record, member.X);
  record += ',';
  AppendNumber(record, member.Y);
  record += ',';
  AppendNumber(record, member.Facet);
  record += ',';
  AppendNumber(record, member.HP);
  record += behindHP;
  record += member.InBattle ? "1," : "0,";
  record += member.IsDead ? '1' : '0';
  return record;
}

}  // namespace

std::string PositionRecord(const ClientSocket& member) {
  return Record(member, ",");
}

std::string MemberRecord(const ClientSocket& member) {
  return Record(member, "");
}

}  // namespace corvane::wire
