#pragma once

#include <chrono>
#include <cstddef>

#include "buffers/buffer_pool.h"

namespace corvane {

class TCPSocket;
class WatchList;

// The memory that peers can make the server hold, and its limits. Owns the pools of input and
// output; borrows the list of connections.
class ConnectionMemory {
 public:
  struct Limits {
    // Unsent bytes of one connection, which fails when it is sent more.
    std::size_t connectionOutput = std::size_t{16} << 20;
    // Bytes of all connections together. Above this limit only the connection that holds most
    // fails.
    std::size_t output = std::size_t{1} << 30;
    std::size_t input = std::size_t{256} << 20;
    // A closed connection drops its output once its peer has taken nothing for this long.
    std::chrono::milliseconds drain{5'000};
    // How often the server checks that a peer whose receive window is full still exists.
    std::chrono::milliseconds lookAtFullPeer{30'000};
  };

  ConnectionMemory(const WatchList& watched, const Limits& given)
      : limits(given), myWatched(watched) {}

  const Limits limits;
  BufferPool input;
  BufferPool output;

  // Call these when a connection may hold more than before. If all connections together exceed
  // their limit, the one that holds most fails.
  void BoundInput();
  void BoundOutput();
  // Makes room for a message of so many bytes. If it would exceed the limit of all output, the
  // connection that holds most fails. Returns false, and fails none, if that one holds less than
  // the message needs.
  bool MakeRoomForOutput(std::size_t bytes);

 private:
  // Fails the connection that holds most; false if it holds less than `least`.
  bool FailLargest(std::size_t (TCPSocket::*held)() const, std::size_t least = 1);

  const WatchList& myWatched;
};

}  // namespace corvane
