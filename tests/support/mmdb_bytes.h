#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace corvane {

// Values of an mmdb file's data.
std::string MmdbText(const std::string& text);
std::string MmdbArray(const std::vector<std::string>& values);
std::string MmdbMap(const std::vector<std::pair<std::string, std::string>>& entries);

// Of the addresses whose first `bits` bits are those of the IPv4 address.
struct MmdbRange {
  std::uint32_t address = 0;
  int bits = 0;
  std::string value;
};

// Version 4 or 6 of the tree; in that of version 6 the addresses begin with 96 bits of 0. The
// ranges do not overlap.
std::string MmdbBytes(int version, const std::vector<MmdbRange>& ranges);

}  // namespace corvane
