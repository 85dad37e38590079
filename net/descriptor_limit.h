#pragma once

#include "net/os_socket.h"

namespace corvane {

// Raises the process's limit of open descriptors to the system's maximum; every client takes one.
// Also makes the system allocate its table for them. Call it before the process has a second
// thread.
void RaiseDescriptorLimit();

// Whether one more connection leaves enough descriptors for the rest of the process: the database's
// journal, lookups, files. `last` is the connection that was accepted last, if any: its number
// shows how many descriptors are in use, which saves a system call.
bool HasSpareDescriptors(os::SocketHandle last);

}  // namespace corvane
