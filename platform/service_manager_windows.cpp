#include "platform/service_manager.h"

namespace corvane {

// The server is no service there.
void TellServiceManager(ServiceState) {}

}  // namespace corvane
