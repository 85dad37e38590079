#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace corvane {

class SocketCore;
class TCPSocket;

// The sockets whose descriptors are watched, by token. The number of a closed descriptor comes
// back with the next one; a token does not, so readiness that was noted for a socket that is gone
// finds nobody.
class WatchList {
 public:
  // 0 is no socket's token.
  std::uint64_t Add(SocketCore& socket);
  void Remove(std::uint64_t token);
  // None for a token that is no more.
  SocketCore* Find(std::uint64_t token) const;

  std::vector<std::shared_ptr<SocketCore>> All() const;
  // Those that are no listeners.
  std::vector<std::shared_ptr<TCPSocket>> Connections() const;

 private:
  struct Slot {
    SocketCore* socket = nullptr;
    std::uint32_t generation = 0;
  };

  bool Holds(std::uint64_t token) const;

  std::vector<Slot> mySlots;
  std::vector<std::uint32_t> myFree;
};

}  // namespace corvane
