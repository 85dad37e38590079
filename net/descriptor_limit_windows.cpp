#include "net/descriptor_limit.h"

namespace corvane {

// The only limit here is memory.
void RaiseDescriptorLimit() {}

bool HasSpareDescriptors(os::SocketHandle) {
  return true;
}

}  // namespace corvane
