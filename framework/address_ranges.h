#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

// An IPv4 address as a number: 10.0.0.1 is 0x0A000001. None for any other text, including texts
// that only some programs read as an address (10.1, 010.0.0.1).
std::optional<std::uint32_t> IPv4FromText(std::string_view text);

std::string TextFromIPv4(std::uint32_t address);

// IPv4 addresses from the first to the last.
struct AddressRange {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
  auto operator<=>(const AddressRange&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

// An address, or a prefix such as 10.0.0.0/8. None if bits are set beyond its length (10.0.0.1/8).
std::optional<AddressRange> PrefixFromText(std::string_view text);
// The same, or two addresses such as 10.0.0.3-10.0.0.9, the smaller first.
std::optional<AddressRange> RangeFromText(std::string_view text);
// As a prefix if it is one.
std::string TextOf(const AddressRange& range);

// An immutable set of IPv4 addresses, given as a list of addresses and prefixes such as 10.0.0.0/8.
class AddressRanges {
 public:
  AddressRanges() = default;
  // Entries are separated by blanks, commas or semicolons. Invalid entries are skipped, and so are
  // prefixes with bits set beyond their length (10.0.0.1/8).
  explicit AddressRanges(std::string_view list);

  // Whether every entry of the list was valid.
  bool IsComplete() const { return myIsComplete; }
  // The valid entries, separated by commas.
  const std::string& Text() const { return myText; }

  bool Contains(std::string_view address) const;

 private:
  std::vector<AddressRange> myRanges;
  std::string myText;
  bool myIsComplete = true;
};

}  // namespace corvane
