#include "net/socket_pool.h"

#include <algorithm>
#include <iterator>
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
  // From the end: mostly it is the short visits that end.
  const auto found = std::find_if(active.rbegin(), active.rend(),
                                  [&](const auto& other) { return other.get() == &socket; });
  if (found != active.rend()) active.erase(std::prev(found.base()));
}

}  // namespace corvane
