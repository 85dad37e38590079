#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/service_manager.h"

namespace corvane {
namespace {

std::string MessageFor(ServiceState state) {
  switch (state) {
    case ServiceState::Ready:
      return "READY=1";
    case ServiceState::Stopping:
      return "STOPPING=1";
    case ServiceState::Alive:
      return "WATCHDOG=1";
    case ServiceState::Reloading:
      break;
  }
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const long long microseconds = now.tv_sec * 1'000'000LL + now.tv_nsec / 1000;
  return "RELOADING=1\nMONOTONIC_USEC=" + std::to_string(microseconds);
}

}  // namespace

std::optional<std::chrono::microseconds> WatchdogInterval() {
  const char* const text = std::getenv("WATCHDOG_USEC");
  const long long interval = text == nullptr ? 0 : std::atoll(text);
  if (interval <= 0) return std::nullopt;
  return std::chrono::microseconds(interval);
}

void NotifyServiceManager(ServiceState state) {
  const char* const place = std::getenv("NOTIFY_SOCKET");
  if (place == nullptr) return;
  const std::string_view path = place;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return;
  std::memcpy(address.sun_path, path.data(), path.size());
  // An abstract socket's name begins with a NUL.
  if (path.front() == '@') address.sun_path[0] = '\0';
  const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0) return;
  const std::string message = MessageFor(state);
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
  // Never waits for a manager that does not read.
  sendto(descriptor, message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
         reinterpret_cast<const sockaddr*>(&address), length);
  close(descriptor);
}

}  // namespace corvane
