#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "net/os_socket.h"

namespace corvane {

// Asks the operating system which sockets are ready. Edge-triggered: a socket is reported, with its
// token, when it becomes ready; it may be reported again while it stays ready.
class Poller {
 public:
  struct Ready {
    std::uint64_t token = 0;
    bool readable = false;
    bool writable = false;
    bool hungUp = false;  // ended by the peer or failed; reading finds out which
  };

  // `wake` is called from Qt's event loop when sockets have become ready since the last Wait.
  explicit Poller(std::function<void()> wake);
  ~Poller();
  Poller(const Poller&) = delete;
  Poller& operator=(const Poller&) = delete;

  // Returns the system's error code, 0 for success.
  int Add(os::SocketHandle handle, std::uint64_t token);
  // Call before the handle is closed.
  void Remove(os::SocketHandle handle);

  // Stops calling `wake`, for good.
  void Quiet();

  // The sockets that are ready; waits at most this long for the first. Valid until the next call.
  std::span<const Ready> Wait(std::chrono::milliseconds patience);

 private:
  struct System;
  std::unique_ptr<System> mySystem;
};

}  // namespace corvane
