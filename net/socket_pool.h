#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "framework/snapshot_list.h"

namespace corvane {

class TCPSocket;

// The connections of one listener: those that wait to be handed off, those that were, and how many
// more may be. A stack of the idle ones, the active ones in hand-off order.
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
  // The reverse for an object that ends: off the active list, 1 more to hand out.
  void GiveBack(const TCPSocket& socket);

  Active::Snapshot ActiveSockets() const { return myActive.Get(); }

  std::int64_t Minimum() const { return myMinimum; }
  bool IsBelowMinimum() const { return static_cast<std::int64_t>(myIdle.size()) < myMinimum; }

  bool isFilled = false;

 private:
  Sockets myIdle;
  Active myActive;
  std::int32_t myMinimum;
  std::int32_t myBudget;
};

}  // namespace corvane
