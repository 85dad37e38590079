#pragma once

#include <cstddef>
#include <netinet/in.h>

namespace corvane::swarm {

// Addresses of the loopback range, 127.0.0.0/8, from which clients connect to a server on this
// machine, so that they look like clients of as many machines. Empty: the system chooses.
struct LoopbackRange {
  in_addr_t first = 0;  // in host byte order
  std::size_t count = 0;
};

// Connects sockets to a server from the addresses of a range in turn. If the range is empty and the
// ports to a server on this machine run out, further connections come from other loopback
// addresses.
class SourceAddresses {
 public:
  SourceAddresses(const sockaddr_in& server, const LoopbackRange& range)
      : myServer(server), myRange(range) {}

  // Starts to connect a socket from the address number `source` (modulo the range). False with
  // errno set if the system refuses.
  bool Connect(int descriptor, std::size_t source);

 private:
  bool AdvanceFallback();

  sockaddr_in myServer;
  LoopbackRange myRange;
  in_addr_t myFallback = 0;  // of new connections once ports ran out
};

}  // namespace corvane::swarm
