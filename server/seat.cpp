#include "server/seat.h"

namespace corvane {

bool Seat::Take(const NetworkRef& network) {
  Release();
  if (network == nullptr || !network->Enabled || network->CurrentUsers >= network->MaxUsers) {
    return false;
  }
  ++network->CurrentUsers;
  myNetwork = network;
  return true;
}

void Seat::Release() {
  if (myNetwork == nullptr) return;
  --myNetwork->CurrentUsers;
  myNetwork = nullptr;
}

}  // namespace corvane
