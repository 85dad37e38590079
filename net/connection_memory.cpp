#include "net/connection_memory.h"

#include <algorithm>

#include "net/tcp_socket.h"
#include "net/watch_list.h"

namespace corvane {

void ConnectionMemory::BoundInput() {
  if (input.InUse() > limits.input) FailLargest(&TCPSocket::InputHeld);
}

void ConnectionMemory::BoundOutput() {
  if (output.InUse() > limits.output) FailLargest(&TCPSocket::BytesLeftToSend);
}

bool ConnectionMemory::MakeRoomForOutput(std::size_t bytes) {
  return output.InUse() + bytes <= limits.output || FailLargest(&TCPSocket::BytesLeftToSend, bytes);
}

bool ConnectionMemory::FailLargest(std::size_t (TCPSocket::*held)() const, std::size_t least) {
  const auto connections = myWatched.Connections();
  const auto largest = std::ranges::max_element(
      connections, {}, [held](const auto& connection) { return (*connection.*held)(); });
  if (largest == connections.end() || (**largest.*held)() < least) return false;
  (*largest)->FailForMemory();
  return true;
}

}  // namespace corvane
