#include "framework/address_ranges.h"

#include <algorithm>
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

std::optional<AddressRanges::Range> AddressRanges::RangeFromText(std::string_view text) {
  const auto slash = std::min(text.find('/'), text.size());
  const auto first = IPv4FromText(text.substr(0, slash));
  const auto length = slash == text.size() ? std::optional<std::uint32_t>(kAddressBits)
                                           : PlainNumber(text.substr(slash + 1), kAddressBits);
  if (!first || !length) return std::nullopt;
  const std::uint64_t size = std::uint64_t{1} << (kAddressBits - *length);
  if (*first % size != 0) return std::nullopt;
  return Range{*first, static_cast<std::uint32_t>(*first + (size - 1))};
}

AddressRanges::AddressRanges(std::string_view list) {
  constexpr std::string_view kSeparators = " ,;\t\r\n";
  for (auto begin = list.find_first_not_of(kSeparators); begin != std::string_view::npos;
       begin = list.find_first_not_of(kSeparators)) {
    list.remove_prefix(begin);
    const std::string_view entry = list.substr(0, list.find_first_of(kSeparators));
    if (const auto range = RangeFromText(entry)) {
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
  return number && std::ranges::any_of(myRanges, [number](const Range& range) {
           return range.first <= *number && *number <= range.last;
         });
}

}  // namespace corvane
