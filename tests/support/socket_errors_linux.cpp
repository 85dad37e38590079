#include <cerrno>

#include "tests/support/socket_errors.h"

namespace corvane {

const int kAddressInUse = EADDRINUSE;
const int kAddressNotAvailable = EADDRNOTAVAIL;
const int kConnectionRefused = ECONNREFUSED;

}  // namespace corvane
