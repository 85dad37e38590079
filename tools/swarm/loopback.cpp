#include "tools/swarm/loopback.h"

#include <sys/socket.h>

namespace corvane::swarm {

bool LoopbackRange::Bind(int descriptor, std::size_t number) const {
  return myCount == 0 || BindTo(descriptor, myFirst + static_cast<in_addr_t>(number % myCount));
}

bool LoopbackRange::BindTo(int descriptor, in_addr_t address) {
  // The port is chosen by connect, which knows that one can serve several destinations.
  const int yes = 1;
  setsockopt(descriptor, IPPROTO_IP, IP_BIND_ADDRESS_NO_PORT, &yes, sizeof yes);
  sockaddr_in source{};
  source.sin_family = AF_INET;
  source.sin_addr.s_addr = htonl(address);
  return bind(descriptor, reinterpret_cast<const sockaddr*>(&source), sizeof source) == 0;
}

}  // namespace corvane::swarm
