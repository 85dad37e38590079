#pragma once

#include <utility>

#include "server/server_networks.h"

namespace corvane {

// A place in a network, counted in its CurrentUsers while it is held. Given back exactly once, by
// Release or by the destructor.
class Seat {
 public:
  Seat() = default;
  ~Seat() { Release(); }
  Seat(const Seat&) = delete;
  Seat& operator=(const Seat&) = delete;

  // Gives back the seat that is held and takes one in this network. Returns whether it got one:
  // there is a network, Enabled and not full.
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
