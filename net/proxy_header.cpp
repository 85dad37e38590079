#include "net/proxy_header.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>

#include <QtEndian>

#include "framework/ip_address.h"

namespace corvane {
namespace {

constexpr std::string_view kLineStart = "PROXY ";
constexpr std::string_view kSignature("\r\n\r\n\0\r\nQUIT\n", 12);
constexpr std::size_t kCommandAt = 12;
constexpr std::size_t kFamilyAt = 13;
constexpr std::size_t kLengthAt = 14;
constexpr std::size_t kFixedBytes = 16;

const ProxyHeader kMalformed{ProxyHeader::State::Malformed, 0, {}};

bool MayStartWith(std::string_view bytes, std::string_view start) {
  return bytes.substr(0, start.size()) == start.substr(0, bytes.size());
}

// Removes the next field and the blank behind it from the line.
std::string_view TakeField(std::string_view& line) {
  const std::string_view field = line.substr(0, line.find(' '));
  line.remove_prefix(std::min(field.size() + 1, line.size()));
  return field;
}

std::optional<std::string> TakeAddress(std::string_view& line, bool isIPv6) {
  const std::string_view field = TakeField(line);
  const bool hasColon = field.find(':') != std::string_view::npos;
  return hasColon == isIPv6 ? AddressFromText(field) : std::nullopt;
}

// Decimal, without a sign or a leading zero.
std::optional<std::uint16_t> PortFromText(std::string_view text) {
  std::uint16_t port = 0;
  std::from_chars(text.data(), text.data() + text.size(), port);
  return std::to_string(port) == text ? std::optional(port) : std::nullopt;
}

// Version 1: PROXY TCP4|TCP6 SOURCE DESTINATION SOURCEPORT DESTINATIONPORT, or PROXY UNKNOWN and
// anything.
ProxyHeader ReadLine(std::string_view bytes) {
  const std::size_t end = bytes.substr(0, kMaxProxyHeaderRead).find("\r\n");
  if (end == std::string_view::npos) {
    return bytes.size() < kMaxProxyHeaderRead ? ProxyHeader() : kMalformed;
  }
  std::string_view line = bytes.substr(0, end);
  line.remove_prefix(kLineStart.size());
  ProxyHeader header{ProxyHeader::State::Known, end + 2, {}};
  const std::string_view family = TakeField(line);
  if (family == "UNKNOWN") return header;
  if (family != "TCP4" && family != "TCP6") return kMalformed;
  const auto source = TakeAddress(line, family == "TCP6");
  const auto destination = TakeAddress(line, family == "TCP6");
  const auto sourcePort = PortFromText(TakeField(line));
  if (!source || !destination || !sourcePort || !PortFromText(line)) return kMalformed;
  header.source = {*source, *sourcePort};
  return header;
}

// Version 2: the signature, version and command, family and transport, the length of the rest; then
// for TCP both addresses and both ports.
ProxyHeader ReadBinary(std::string_view bytes) {
  const auto at = [bytes](std::size_t place) { return static_cast<unsigned char>(bytes[place]); };
  constexpr unsigned kLocal = 0x20;
  constexpr unsigned kProxy = 0x21;
  if (bytes.size() <= kCommandAt) return {};
  if (at(kCommandAt) != kLocal && at(kCommandAt) != kProxy) return kMalformed;
  if (bytes.size() < kFixedBytes) return {};
  const std::size_t rest = qFromBigEndian<quint16>(bytes.data() + kLengthAt);
  ProxyHeader header{ProxyHeader::State::Known, kFixedBytes + rest, {}};
  if (at(kCommandAt) == kLocal) return header;
  const unsigned family = at(kFamilyAt) >> 4U;
  const unsigned transport = at(kFamilyAt) & 0xFU;
  if (family > 3 || transport > 2) return kMalformed;
  // What is no TCP has no address that a client of ours may have.
  if (transport != 1 || family == 0 || family == 3) return header;
  const std::size_t addressBytes = family == 1 ? 4 : 16;
  const std::size_t needed = 2 * (addressBytes + sizeof(quint16));
  if (rest < needed) return kMalformed;
  if (bytes.size() < kFixedBytes + needed) return {};
  const char* const port = bytes.data() + kFixedBytes + 2 * addressBytes;
  header.source = {AddressFromBytes(bytes.substr(kFixedBytes, addressBytes)),
                   qFromBigEndian<quint16>(port)};
  return header;
}

}  // namespace

ProxyHeader ReadProxyHeader(std::string_view bytes) {
  if (MayStartWith(bytes, kSignature)) return ReadBinary(bytes);
  return MayStartWith(bytes, kLineStart) ? ReadLine(bytes) : kMalformed;
}

}  // namespace corvane
