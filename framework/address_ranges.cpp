#include "framework/address_ranges.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <system_error>

namespace corvane {
namespace {

constexpr int kAddressBits = 32;

// The whole text as a decimal number up to `max`, without a sign or a leading zero.
std::optional<std::uint32_t> PlainNumber(std::string_view text, std::uint32_t max) {
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  const bool isWhole = error == std::errc() && stop == end && (text.size() == 1 || text[0] != '0');
  return isWhole && number <= max ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<std::uint32_t> IPv4FromText(std::string_view text) {
  std::uint32_t address = 0;
  for (int part = 0; part < 4; ++part) {
    const auto dot = part < 3 ? text.find('.') : text.size();
    if (dot == std::string_view::npos) return std::nullopt;
    const auto number = PlainNumber(text.substr(0, dot), 255);
    if (!number) return std::nullopt;
    address = address << 8 | *number;
    text.remove_prefix(std::min(dot + 1, text.size()));
  }
  return address;
}

std::string TextFromIPv4(std::uint32_t address) {
  std::string text = std::to_string(address >> 24);
  for (int shift = 16; shift >= 0; shift -= 8)
    text += '.' + std::to_string(address >> shift & 0xFF);
  return text;
}

std::optional<AddressRange> PrefixFromText(std::string_view text) {
  const auto slash = std::min(text.find('/'), text.size());
  const auto first = IPv4FromText(text.substr(0, slash));
  const auto length = slash == text.size() ? std::optional<std::uint32_t>(kAddressBits)
                                           : PlainNumber(text.substr(slash + 1), kAddressBits);
  if (!first || !length) return std::nullopt;
  const std::uint64_t size = std::uint64_t{1} << (kAddressBits - *length);
  if (*first % size != 0) return std::nullopt;
  return AddressRange{*first, static_cast<std::uint32_t>(*first + (size - 1))};
}

std::optional<AddressRange> RangeFromText(std::string_view text) {
  const auto dash = text.find('-');
  if (dash == std::string_view::npos) return PrefixFromText(text);
  const auto first = IPv4FromText(text.substr(0, dash));
  const auto last = IPv4FromText(text.substr(dash + 1));
  if (!first || !last || *first > *last) return std::nullopt;
  return AddressRange{*first, *last};
}

std::string TextOf(const AddressRange& range) {
  const std::uint64_t size = std::uint64_t{range.last} - range.first + 1;
  if (size == 1) return TextFromIPv4(range.first);
  if (!std::has_single_bit(size) || range.first % size != 0) {
    return TextFromIPv4(range.first) + '-' + TextFromIPv4(range.last);
  }
  return TextFromIPv4(range.first) + '/' + std::to_string(kAddressBits + 1 - std::bit_width(size));
}

AddressRanges::AddressRanges(std::string_view list) {
  constexpr std::string_view kSeparators = " ,;\t\r\n";
  for (auto begin = list.find_first_not_of(kSeparators); begin != std::string_view::npos;
       begin = list.find_first_not_of(kSeparators)) {
    list.remove_prefix(begin);
    const std::string_view entry = list.substr(0, list.find_first_of(kSeparators));
    if (const auto range = PrefixFromText(entry)) {
      myRanges.push_back(*range);
      myText.append(myText.empty() ? "" : ", ").append(entry);
    } else {
      myIsComplete = false;
    }
    list.remove_prefix(entry.size());
  }
}

bool AddressRanges::Contains(std::string_view address) const {
  if (myRanges.empty()) return false;
  const auto number = IPv4FromText(address);
  return number && std::ranges::any_of(myRanges, [number](const AddressRange& range) {
           return range.first <= *number && *number <= range.last;
         });
}

}  // namespace corvane
