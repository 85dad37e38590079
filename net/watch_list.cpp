#include "net/watch_list.h"

#include <algorithm>
#include <utility>

#include "net/socket_core.h"

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
  if (!Holds(token)) return;
  Slot& slot = mySlots[IndexOf(token)];
  slot.socket = nullptr;
  myFree.push_back(IndexOf(token));
  // Last, since it may be the last reference to a socket whose end changes the list.
  const std::shared_ptr<SocketCore> kept = std::exchange(slot.keep, nullptr);
}

SocketCore* WatchList::Find(std::uint64_t token) const {
  return Holds(token) ? mySlots[IndexOf(token)].socket : nullptr;
}

bool WatchList::Holds(std::uint64_t token) const {
  const std::uint32_t index = IndexOf(token);
  return index < mySlots.size() && mySlots[index].socket != nullptr &&
         mySlots[index].generation == static_cast<std::uint32_t>(token >> 32);
}

void WatchList::Keep(std::uint64_t token, std::shared_ptr<SocketCore> socket) {
  if (Holds(token)) mySlots[IndexOf(token)].keep = std::move(socket);
}

bool WatchList::HasKept() const {
  return std::any_of(mySlots.begin(), mySlots.end(),
                     [](const Slot& slot) { return slot.keep != nullptr; });
}

std::vector<std::shared_ptr<SocketCore>> WatchList::TakeKept() {
  std::vector<std::shared_ptr<SocketCore>> kept;
  for (Slot& slot : mySlots) {
    if (slot.keep != nullptr) kept.push_back(std::exchange(slot.keep, nullptr));
  }
  return kept;
}

std::vector<std::shared_ptr<SocketCore>> WatchList::All() const {
  std::vector<std::shared_ptr<SocketCore>> sockets;
  for (const Slot& slot : mySlots) {
    if (slot.socket != nullptr) sockets.push_back(slot.socket->shared_from_this());
  }
  return sockets;
}

}  // namespace corvane
