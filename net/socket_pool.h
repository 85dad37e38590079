#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "framework/snapshot_list.h"

namespace corvane {

class TCPSocket;

// The connection objects of one listener: a stack of idle ones and the active ones in hand-off
// order. Its budget is how many more may be handed off. Shares ownership of the objects.
class SocketPool {
 public:
  using Sockets = std::vector<std::shared_ptr<TCPSocket>>;
  using Active = SnapshotList<std::shared_ptr<TCPSocket>>;

  SocketPool(std::int32_t minimum, std::int32_t budget) : myMinimum(minimum), myBudget(budget) {}

  void AddIdle(std::shared_ptr<TCPSocket> socket) { myIdle.push_back(std::move(socket)); }
  Sockets TakeIdle() { return std::exchange(myIdle, {}); }

  bool CanHandOff() const { return myBudget > 0 && !myIdle.empty(); }
  // Moves the idle object that was added last to the active ones and takes 1 off the budget.
  std::shared_ptr<TCPSocket> HandOff();
  // Removes an object that ends from the active ones and adds 1 to the budget.
  void GiveBack(const TCPSocket& socket);

  Active::Snapshot ActiveSockets() const { return myActive.Get(); }

  std::int64_t Minimum() const { return myMinimum; }
  bool IsBelowMinimum() const { return static_cast<std::int64_t>(myIdle.size()) < myMinimum; }

  bool isFilled = false;  // the listener has made the first idle objects

 private:
  Sockets myIdle;
  Active myActive;
  std::int32_t myMinimum;
  std::int32_t myBudget;
};

}  // namespace corvane
