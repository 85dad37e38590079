#include "net/watch_list.h"

#include <utility>

#include "net/tcp_socket.h"

namespace corvane {
namespace {

std::uint32_t IndexOf(std::uint64_t token) {
  return static_cast<std::uint32_t>(token);
}

}  // namespace

std::uint64_t WatchList::Add(SocketCore& socket) {
  if (myFree.empty()) {
    myFree.push_back(static_cast<std::uint32_t>(mySlots.size()));
    mySlots.emplace_back();
  }
  const std::uint32_t index = myFree.back();
  myFree.pop_back();
  Slot& slot = mySlots[index];
  slot.socket = &socket;
  ++slot.generation;
  return (std::uint64_t{slot.generation} << 32) | index;
}

void WatchList::Remove(std::uint64_t token) {
  if (Find(token) == nullptr) return;
  mySlots[IndexOf(token)].socket = nullptr;
  myFree.push_back(IndexOf(token));
}

SocketCore* WatchList::Find(std::uint64_t token) const {
  const std::uint32_t index = IndexOf(token);
  const bool isKnown = index < mySlots.size() && mySlots[index].generation == token >> 32;
  return isKnown ? mySlots[index].socket : nullptr;
}

std::vector<std::shared_ptr<SocketCore>> WatchList::All() const {
  std::vector<std::shared_ptr<SocketCore>> sockets;
  for (const Slot& slot : mySlots) {
    if (slot.socket != nullptr) sockets.push_back(slot.socket->shared_from_this());
  }
  return sockets;
}

std::vector<std::shared_ptr<TCPSocket>> WatchList::Connections() const {
  std::vector<std::shared_ptr<TCPSocket>> connections;
  for (const std::shared_ptr<SocketCore>& socket : All()) {
    if (auto connection = std::dynamic_pointer_cast<TCPSocket>(socket)) {
      connections.push_back(std::move(connection));
    }
  }
  return connections;
}

}  // namespace corvane
