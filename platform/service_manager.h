#pragma once

#include <chrono>
#include <optional>

namespace corvane {

// Reports the service's state to systemd if it started this process as a service of type "notify"
// (sd_notify(3)). Does nothing otherwise, and nothing on Windows.
enum class ServiceState { Ready, Reloading, Stopping, Alive };
void NotifyServiceManager(ServiceState state);

// How often systemd expects Alive (WatchdogSec=); none if it does not.
std::optional<std::chrono::microseconds> WatchdogInterval();

// Reports the service as reloading while it exists, and as ready afterwards.
class ServiceReload {
 public:
  ServiceReload() { NotifyServiceManager(ServiceState::Reloading); }
  ~ServiceReload() { NotifyServiceManager(ServiceState::Ready); }
  ServiceReload(const ServiceReload&) = delete;
  ServiceReload& operator=(const ServiceReload&) = delete;
};

}  // namespace corvane
