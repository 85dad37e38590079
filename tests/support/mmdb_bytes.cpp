#include "tests/support/mmdb_bytes.h"

#include <array>

namespace corvane {
namespace {

constexpr int kText = 2;
constexpr int kUint16 = 5;
constexpr int kUint32 = 6;
constexpr int kMap = 7;
constexpr int kUint64 = 9;
constexpr int kArray = 11;

std::string BigEndian(std::uint32_t number, int bytes) {
  std::string text;
  for (int i = bytes; i-- > 0;)
    text += static_cast<char>(number >> (8 * i) & 0xFF);
  return text;
}

// The bytes before a value: its type and size, at most 65,820.
std::string Control(int type, std::size_t size) {
  const auto number = static_cast<std::uint32_t>(size);
  const std::uint32_t inByte = number < 29 ? number : number < 285 ? 29 : 30;
  const bool isExtended = type > 7;
  std::string bytes =
      BigEndian((isExtended ? 0U : static_cast<std::uint32_t>(type) << 5) | inByte, 1);
  if (isExtended) bytes += static_cast<char>(type - 7);
  if (inByte == 29) bytes += BigEndian(number - 29, 1);
  if (inByte == 30) bytes += BigEndian(number - 285, 2);
  return bytes;
}

std::string Number(int type, std::uint32_t number) {
  const int size = type == kUint16 ? 2 : 4;
  return Control(type, static_cast<std::size_t>(size)) + BigEndian(number, size);
}

}  // namespace

std::string MmdbText(const std::string& text) {
  return Control(kText, text.size()) + text;
}

std::string MmdbArray(const std::vector<std::string>& values) {
  std::string bytes = Control(kArray, values.size());
  for (const std::string& value : values)
    bytes += value;
  return bytes;
}

std::string MmdbMap(const std::vector<std::pair<std::string, std::string>>& entries) {
  std::string bytes = Control(kMap, entries.size());
  for (const auto& [key, value] : entries)
    bytes += MmdbText(key) + value;
  return bytes;
}

std::string MmdbBytes(int version, const std::vector<MmdbRange>& ranges) {
  constexpr std::uint32_t kNothing = 0;  // no record points to the root
  std::vector<std::array<std::uint32_t, 2>> nodes(1);
  std::vector<std::array<std::size_t, 3>> ends;  // node, side, offset in the data
  std::string data;
  for (const MmdbRange& range : ranges) {
    const int zeros = version == 6 ? 96 : 0;
    std::size_t node = 0;
    for (int bit = 0; bit < zeros + range.bits; ++bit) {
      const std::size_t side = bit < zeros ? 0 : range.address >> (31 - (bit - zeros)) & 1;
      if (bit + 1 == zeros + range.bits) {
        ends.push_back({node, side, data.size()});
      } else {
        if (nodes[node][side] == kNothing) {
          nodes[node][side] = static_cast<std::uint32_t>(nodes.size());
          nodes.emplace_back();
        }
        node = nodes[node][side];
      }
    }
    data += range.value;
  }
  const auto count = static_cast<std::uint32_t>(nodes.size());
  for (const auto& [node, side, offset] : ends) {
    nodes[node][side] = count + 16 + static_cast<std::uint32_t>(offset);
  }
  std::string bytes;
  for (const auto& node : nodes) {
    for (const std::uint32_t record : node)
      bytes += BigEndian(record == kNothing ? count : record, 3);
  }
  return bytes + std::string(16, '\0') + data + "\xAB\xCD\xEFMaxMind.com" +
         MmdbMap({{"node_count", Number(kUint32, count)},
                  {"record_size", Number(kUint16, 24)},
                  {"ip_version", Number(kUint16, static_cast<std::uint32_t>(version))},
                  {"database_type", MmdbText("Test")},
                  {"languages", MmdbArray({})},
                  {"description", MmdbMap({})},
                  {"binary_format_major_version", Number(kUint16, 2)},
                  {"binary_format_minor_version", Number(kUint16, 0)},
                  {"build_epoch", Number(kUint64, 1'780'000'000)}});
}

}  // namespace corvane
