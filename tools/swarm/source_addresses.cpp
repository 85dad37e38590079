#include "tools/swarm/source_addresses.h"

#include <cerrno>
#include <sys/socket.h>

namespace corvane::swarm {

namespace {

constexpr in_addr_t kMaxFallbacks = 64;

// `address` is in host byte order.
bool BindTo(int descriptor, in_addr_t address) {
  // connect chooses the port, so that one port can serve several destinations.
  const int on = 1;
  setsockopt(descriptor, IPPROTO_IP, IP_BIND_ADDRESS_NO_PORT, &on, sizeof on);
  sockaddr_in source{};
  source.sin_family = AF_INET;
  source.sin_addr.s_addr = htonl(address);
  return bind(descriptor, reinterpret_cast<const sockaddr*>(&source), sizeof source) == 0;
}

}  // namespace

bool SourceAddresses::Connect(int descriptor, std::size_t source) {
  const auto* const server = reinterpret_cast<const sockaddr*>(&myServer);
  do {
    const in_addr_t address = myRange.count == 0
                                  ? myFallback
                                  : myRange.first + static_cast<in_addr_t>(source % myRange.count);
    if (address != 0 && !BindTo(descriptor, address)) return false;
    if (connect(descriptor, server, sizeof myServer) == 0 || errno == EINPROGRESS) return true;
  } while (errno == EADDRNOTAVAIL && AdvanceFallback());
  return false;
}

bool SourceAddresses::AdvanceFallback() {
  const bool isLocal = ntohl(myServer.sin_addr.s_addr) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET;
  if (!isLocal || myRange.count > 0 || myFallback == INADDR_LOOPBACK + kMaxFallbacks) return false;
  myFallback = myFallback == 0 ? INADDR_LOOPBACK + 1 : myFallback + 1;
  return true;
}

}  // namespace corvane::swarm
