#include "platform/service_manager.h"

namespace corvane {

// The server is not a service on Windows.
void TellServiceManager(ServiceState) {}

}  // namespace corvane
