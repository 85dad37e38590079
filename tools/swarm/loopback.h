#pragma once

#include <cstddef>
#include <netinet/in.h>

namespace corvane::swarm {

// Addresses of the loopback range, 127.0.0.0/8, from which clients connect to a server on this
// machine, so that it sees them come from so many places.
class LoopbackRange {
 public:
  // None: the system chooses.
  LoopbackRange() = default;
  // `count` addresses from `first` on, in host byte order.
  LoopbackRange(in_addr_t first, std::size_t count) : myFirst(first), myCount(count) {}

  bool IsChosen() const { return myCount > 0; }

  // Binds a socket that is to be connected to the address that is the client's by its number. The
  // port is left to connect. False, with errno set, where the system refuses.
  bool Bind(int descriptor, std::size_t number) const;

  // The same, to an address in host byte order.
  static bool BindTo(int descriptor, in_addr_t address);

 private:
  in_addr_t myFirst = 0;
  std::size_t myCount = 0;
};

}  // namespace corvane::swarm
