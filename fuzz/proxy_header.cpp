// Bytes read as a proxy's header, cut at each place: what is known stays so however much follows,
// what is incomplete is all the header's, and a client that was found is found again in a header
// made for it.

#include "net/proxy_header.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using corvane::ProxyHeader;
using corvane::ReadProxyHeader;
using State = ProxyHeader::State;

void Expect(bool holds) {
  if (!holds) std::abort();
}

bool AreSame(const ProxyHeader& one, const ProxyHeader& other) {
  if (one.state != other.state || one.length != other.length) return false;
  if (!one.source || !other.source) return one.source.has_value() == other.source.has_value();
  return one.source->address == other.source->address && one.source->port == other.source->port;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const ProxyHeader header = ReadProxyHeader(bytes);
  if (size >= corvane::kMaxProxyHeaderRead) Expect(header.state != State::Incomplete);

  bool wasIncomplete = true;
  for (std::size_t cut = 0; cut <= std::min(size, corvane::kMaxProxyHeaderRead); ++cut) {
    const ProxyHeader part = ReadProxyHeader(bytes.substr(0, cut));
    if (part.state == State::Incomplete) {
      Expect(wasIncomplete && (header.state != State::Known || cut < header.length));
    } else {
      Expect(AreSame(part, header));
    }
    wasIncomplete = part.state == State::Incomplete;
  }

  if (!header.source) return 0;
  const auto& [address, port] = *header.source;
  const std::string family = address.find(':') == std::string::npos ? "TCP4 " : "TCP6 ";
  const std::string line = "PROXY " + family + address + " " + address + " " +
                           std::to_string(port) + " " + std::to_string(port) + "\r\n";
  Expect(AreSame(ReadProxyHeader(line), {State::Known, line.size(), header.source}));
  return 0;
}
