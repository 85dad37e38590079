#pragma once

#include <utility>

#include "server/server_networks.h"

namespace corvane {

// A place in a network, counted in its CurrentUsers while the seat exists: given back exactly
// once, whatever happens to its owner.
class Seat {
 public:
  Seat() = default;
  ~Seat() { Release(); }
  Seat(const Seat&) = delete;
  Seat& operator=(const Seat&) = delete;

  // Takes a seat after giving back the one held. Returns whether there was one: the network is
  // Enabled and not full.
  bool Take(const NetworkRef& network) {
    Release();
    if (!network || !network->Enabled || network->CurrentUsers >= network->MaxUsers) return false;
    ++network->CurrentUsers;
    myNetwork = network;
    return true;
  }
  void Release() {
    if (const NetworkRef network = std::exchange(myNetwork, nullptr)) --network->CurrentUsers;
  }
  bool IsHeld() const { return myNetwork != nullptr; }

 private:
  NetworkRef myNetwork;
};

}  // namespace corvane
