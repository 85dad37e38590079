#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace corvane {

class SocketCore;
class TCPSocket;

// The sockets whose descriptors are watched, by token. Borrows them. The system reuses the number
// of a closed descriptor at once, but a token is never reused, so readiness that was noted for a
// removed socket never reaches another.
class WatchList {
 public:
  // Returns the socket's token, never 0.
  std::uint64_t Add(SocketCore& socket);
  void Remove(std::uint64_t token);
  // Null for the token of a socket that was removed.
  SocketCore* Find(std::uint64_t token) const;

  std::vector<std::shared_ptr<SocketCore>> All() const;
  // The same without listeners.
  std::vector<std::shared_ptr<TCPSocket>> Connections() const;

 private:
  struct Slot {
    SocketCore* socket = nullptr;
    std::uint32_t generation = 0;
  };

  std::vector<Slot> mySlots;
  std::vector<std::uint32_t> myFree;
};

}  // namespace corvane
