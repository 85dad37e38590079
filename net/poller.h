#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "net/os_socket.h"

namespace corvane {

// Which sockets are ready, asked of the operating system. A socket is reported when it becomes
// ready; it may be reported again while it stays so. Its token comes back with each report.
class Poller {
 public:
  struct Ready {
    std::uint64_t token = 0;
    bool readable = false;
    bool writable = false;
    bool hungUp = false;  // the peer ended or the connection failed: reading tells
  };

  // `wake` is called from Qt's event loop when sockets are ready that were not asked for yet.
  explicit Poller(std::function<void()> wake);
  ~Poller();
  Poller(const Poller&) = delete;
  Poller& operator=(const Poller&) = delete;

  // Returns the system's error code, 0 for success.
  int Add(os::SocketHandle handle, std::uint64_t token);
  // Call before the handle is closed.
  void Remove(os::SocketHandle handle);

  // Wakes nobody any more.
  void Quiet();

  // What is ready now, waiting so long for the first. Valid until the next call.
  std::span<const Ready> Wait(std::chrono::milliseconds patience);

 private:
  struct System;
  std::unique_ptr<System> mySystem;
};

}  // namespace corvane
