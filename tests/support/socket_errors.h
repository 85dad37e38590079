#pragma once

#include "net/os_socket.h"

namespace corvane {

// The system's error codes, as in an Error event.
extern const int kAddressInUse;
extern const int kAddressNotAvailable;
extern const int kConnectionRefused;
using os::kConnectionReset;
using os::kInvalidArgument;
using os::kNoBuffers;

}  // namespace corvane
