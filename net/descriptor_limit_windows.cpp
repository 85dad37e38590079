#include "net/descriptor_limit.h"

namespace corvane {

// There is no such limit here but memory.
void RaiseDescriptorLimit() {}

bool HasSpareDescriptors(os::SocketHandle) {
  return true;
}

}  // namespace corvane
