#include "net/socket_pool.h"

#include <utility>

#include "net/tcp_socket.h"

namespace corvane {

std::shared_ptr<TCPSocket> SocketPool::HandOut() {
  std::shared_ptr<TCPSocket> socket = std::move(myIdle.back());
  myIdle.pop_back();
  myActive.Edit().push_back(socket);
  --myBudget;
  return socket;
}

void SocketPool::GiveBack(const TCPSocket& socket) {
  ++myBudget;
  Sockets& active = myActive.Edit();
  for (std::size_t i = active.size(); i-- > 0;) {
    if (active[i].get() == &socket) active.erase(active.begin() + static_cast<std::ptrdiff_t>(i));
  }
}

}  // namespace corvane
