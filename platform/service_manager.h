#pragma once

namespace corvane {

// What the service manager that started this process, systemd, is told of it where it asked for
// that (sd_notify(3), the service type "notify"). Where nobody asked, nothing happens.
enum class ServiceState { Ready, Reloading, Stopping };
void TellServiceManager(ServiceState state);

// While one exists, a service that is ready is being reloaded.
class ServiceReload {
 public:
  ServiceReload() { TellServiceManager(ServiceState::Reloading); }
  ~ServiceReload() { TellServiceManager(ServiceState::Ready); }
  ServiceReload(const ServiceReload&) = delete;
  ServiceReload& operator=(const ServiceReload&) = delete;
};

}  // namespace corvane
