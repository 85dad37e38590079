#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "net/os_socket.h"

namespace corvane {

// Clients of the server on a thread of their own, which throw away what they receive, so that a
// benchmark's thread does the server's work only.
class Sink {
 public:
  Sink();
  ~Sink();
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;

  // Connects and logs in, sending all three steps at once.
  void LogIn(std::int32_t port, std::string_view network, std::string_view password,
             const std::string& user);

 private:
  void Drain();

  int myPoller;
  std::vector<os::SocketHandle> myClients;
  std::atomic<bool> myIsOver = false;
  std::thread myThread;
};

}  // namespace corvane
