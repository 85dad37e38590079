#include "platform/service_manager.h"

namespace corvane {

// The server is not a service on Windows.
void NotifyServiceManager(ServiceState) {}

std::optional<std::chrono::microseconds> WatchdogInterval() {
  return std::nullopt;
}

}  // namespace corvane
