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
    std::chrono::milliseconds lookAtFullPeer{30'000};
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
  // Whether one message of so many bytes may be written. Where all together would hold too much,
  // the connection that holds most fails in its favour, unless it holds less than that.
  bool MakeRoomForOutput(std::size_t bytes);

 private:
  // Whether there is a connection that holds so much.
  bool FailLargest(std::size_t (TCPSocket::*held)() const, std::size_t least = 1);

  const WatchList& myWatched;
};

}  // namespace corvane
