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

// The value of all addresses whose first `bits` bits are those of `address`.
struct MmdbRange {
  std::uint32_t address = 0;
  int bits = 0;
  std::string value;
};

// An mmdb file with a tree of IP version 4 or 6; in version 6 the addresses begin with 96 zero
// bits. The ranges must not overlap.
std::string MmdbBytes(int version, const std::vector<MmdbRange>& ranges);

}  // namespace corvane
