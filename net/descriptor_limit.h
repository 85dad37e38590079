#pragma once

#include "net/os_socket.h"

namespace corvane {

// Raises the process's limit of open descriptors to the system's maximum; every client takes one.
// Also makes the system allocate its table for them. Call it before the process has a second
// thread.
void RaiseDescriptorLimit();

// Whether one more connection leaves enough descriptors for the rest of the process: the database's
// journal, lookups, files. `highest` is the highest number of a connection so far, if any. A low
// one saves system calls. The number of the last one would not do: closed ones leave low numbers.
bool HasSpareDescriptors(os::SocketHandle highest);

}  // namespace corvane
