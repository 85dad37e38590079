#include "net/socket_pool.h"

#include <algorithm>
#include <utility>

#include "net/tcp_socket.h"

namespace corvane {

std::shared_ptr<TCPSocket> SocketPool::HandOff() {
  std::shared_ptr<TCPSocket> socket = std::move(myIdle.back());
  myIdle.pop_back();
  myActive.Edit().push_back(socket);
  --myBudget;
  return socket;
}

void SocketPool::GiveBack(const TCPSocket& socket) {
  ++myBudget;
  Sockets& active = myActive.Edit();
  const auto found = std::ranges::lower_bound(
      active, socket.HandOffNumber(), {}, [](const auto& other) { return other->HandOffNumber(); });
  if (found != active.end() && found->get() == &socket) active.erase(found);
}

}  // namespace corvane
