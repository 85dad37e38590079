#pragma once

#include <chrono>
#include <cstddef>

#include "buffers/buffer_pool.h"

namespace corvane {

class TCPSocket;
class WatchList;

// The memory that all connections together hold, and the bounds of what peers can make us hold.
// Borrows the list of the connections.
class ConnectionMemory {
 public:
  // In bytes. A connection with more unsent output than the first fails. Over the others, which
  // count all connections together, the one that holds most does, and nobody else. What a closed
  // connection still holds is dropped when none of it has moved for as long as `drain`.
  struct Limits {
    std::size_t connectionOutput = std::size_t{16} << 20;
    std::size_t output = std::size_t{1} << 30;
    std::size_t input = std::size_t{256} << 20;
    std::chrono::milliseconds drain{5'000};
  };

  ConnectionMemory(const WatchList& watched, const Limits& limits)
      : bounds(limits), myWatched(watched) {}

  const Limits bounds;
  BufferPool input;
  BufferPool output;

  // To be called when a connection may hold more than before: has the one that holds most fail
  // where all together are over the bound.
  void BoundInput();
  void BoundOutput();
  // Whether one message of so many bytes fits into what all together may hold.
  bool HasRoomForOutput(std::size_t bytes) const { return output.InUse() + bytes <= bounds.output; }

 private:
  void FailLargest(std::size_t (TCPSocket::*held)() const);

  const WatchList& myWatched;
};

}  // namespace corvane
