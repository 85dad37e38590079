#include "net/proxy_header.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace corvane {
namespace {

using namespace std::string_literals;

const std::string kSignatureBytes = "\r\n\r\n\0\r\nQUIT\n"s;
const std::string kTwoIPv4 = "\xC0\0\2\x11\x0A\0\0\1\xDC\4\x2E\xE0"s;
const std::string kTwoIPv6 =
    "\x20\1\x0D\xB8\0\0\0\1\0\0\0\0\0\0\0\1"s + std::string(16, '\xFF') + "\xFF\xFF\0\1"s;
const std::string kMapped = std::string(10, '\0') + "\xFF\xFF\xC0\0\2\x11"s;

std::string Binary(const std::string& commandAndFamily, const std::string& rest) {
  return kSignatureBytes + commandAndFamily + static_cast<char>(rest.size() / 256) +
         static_cast<char>(rest.size() % 256) + rest;
}

std::string Line(const std::string& rest) {
  return "PROXY " + rest + "\r\n";
}

std::string Text(const ProxyHeader& header) {
  if (header.state == ProxyHeader::State::Malformed) return "malformed";
  if (header.state == ProxyHeader::State::Incomplete) return "incomplete";
  return header.source ? header.source->address + " " + std::to_string(header.source->port) : "own";
}

TEST(ProxyHeader, IsReadWholeInPiecesAndBeforeMessages) {
  std::vector<std::pair<std::string, std::string>> cases = {
      {Line("TCP4 192.0.2.17 10.0.0.1 56324 12000"), "192.0.2.17 56324"},
      {Line("TCP6 2001:0DB8:0:0:1:0:0:1 ::1 65535 0"), "2001:db8::1:0:0:1 65535"},
      {Line("TCP6 2001:db8:0:1:1:1:1:1 :: 0 1"), "2001:db8:0:1:1:1:1:1 0"},
      {Line("TCP6 ::FFFF:c000:211 ::ffff:10.0.0.1 1 1"), "192.0.2.17 1"},
      {Line("UNKNOWN"), "own"},
      {Line("UNKNOWN \r \n " + std::string(87, 'f')), "own"},  // the longest line
      {Binary("\x21\x11", kTwoIPv4), "192.0.2.17 56324"},
      {Binary("\x21\x11", kTwoIPv4 + std::string(65'523, 'x')), "192.0.2.17 56324"},
      {Binary("\x21\x21", kTwoIPv6), "2001:db8:0:1::1 65535"},
      {Binary("\x21\x21", kMapped + kMapped + "\0\1\0\1"s), "192.0.2.17 1"},
      {Binary("\x20\xFF", ""), "own"},
      {Binary("\x21\0"s, kTwoIPv4), "own"},
      {Binary("\x21\x12", kTwoIPv4), "own"},
      {Binary("\x21\x31", std::string(216, '/')), "own"},
  };
  for (const std::string& bytes : {Line("UNKNOWN " + std::string(92, 'f')),
                                   Line("UNKNOWNS"),
                                   Line("UDP4 10.0.0.1 10.0.0.1 1 1"),
                                   Line("TCP4 10.0.0.1 10.0.0.1 1"),
                                   Line("TCP4 10.0.0.1 10.0.0.1 1 1 1"),
                                   Line("TCP4 10.0.0.1 10.0.0.1 1 1 "),
                                   Line("TCP4 10.0.0.1  10.0.0.1 1 1"),
                                   Line("TCP4 10.0.0.01 10.0.0.1 1 1"),
                                   Line("TCP4 10.0.0.1 10.1 1 1"),
                                   Line("TCP4 ::1 ::1 1 1"),
                                   Line("TCP6 10.0.0.1 10.0.0.1 1 1"),
                                   Line("TCP6 1::2::3 ::1 1 1"),
                                   Line("TCP6 fe80::1%eth0 ::1 1 1"),
                                   Line("TCP6 \t::1 ::1 1 1"),
                                   Line("TCP4 10.0.0.1 10.0.0.1 65536 1"),
                                   Line("TCP4 10.0.0.1 10.0.0.1 1 01"),
                                   Line("TCP4 10.0.0.1 10.0.0.1 1 -1"),
                                   Line("TCP4 10.0.0.1 10.0.0.1 1 1\n"),
                                   "PROXIES"s,
                                   "\r\n\r\n\r\n"s,
                                   Binary("\x21\x11", kTwoIPv4.substr(1)),
                                   Binary("\x21\x21", kTwoIPv4),
                                   Binary("\x21\x41", kTwoIPv4),
                                   Binary("\x21\x13", kTwoIPv4),
                                   Binary("\x22\x11", kTwoIPv4),
                                   Binary("\x11\x11", kTwoIPv4)})
    cases.emplace_back(bytes, "malformed");
  for (const auto& [all, expected] : cases) {
    const ProxyHeader header = ReadProxyHeader(all + all);
    EXPECT_EQ(Text(header), expected) << all;
    EXPECT_EQ(header.length, expected == "malformed" ? 0U : all.size()) << all;
    std::string before = "incomplete";
    for (std::size_t size = 0; size <= std::min(all.size(), kMaxProxyHeaderRead); ++size) {
      const std::string part = Text(ReadProxyHeader(all.substr(0, size)));
      EXPECT_THAT(part, testing::AnyOf(before, expected)) << all.substr(0, size);
      before = part;
    }
    EXPECT_EQ(before, expected) << all;
  }
}

}  // namespace
}  // namespace corvane
