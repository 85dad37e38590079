#include "platform/service_manager.h"

namespace corvane {

// The server is not a service on Windows.
void NotifyServiceManager(ServiceState) {}

}  // namespace corvane
