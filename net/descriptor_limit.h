#pragma once

#include "net/os_socket.h"

namespace corvane {

// Raises the number of descriptors that the process may have open to the most that the system
// allows it, since every connected client takes one, and has the system make room for them. To be
// called before the process has a second thread.
void RaiseDescriptorLimit();

// Whether one more connection leaves the process some descriptors for its other needs: the
// database's journal, lookups, files. `last` is the connection that was accepted last, if any.
bool HasSpareDescriptors(os::SocketHandle last);

}  // namespace corvane
