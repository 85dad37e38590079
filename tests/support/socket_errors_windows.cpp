#include <winsock2.h>

#include "tests/support/socket_errors.h"

namespace corvane {

const int kAddressInUse = WSAEADDRINUSE;
const int kAddressNotAvailable = WSAEADDRNOTAVAIL;
const int kConnectionRefused = WSAECONNREFUSED;

}  // namespace corvane
