#pragma once

#include <functional>
#include <memory>

namespace corvane {

// Turns what the system tells the process into calls from Qt's event loop: its requests to end
// (SIGINT and SIGTERM on Linux, Ctrl+C and Ctrl+Break on Windows), and on Linux the one to read its
// data anew (SIGHUP). Restores the system's own handling when it is destroyed. One at a time; needs
// a QCoreApplication.
class ProcessSignals {
 public:
  // Without `reload` SIGHUP is left to the system.
  explicit ProcessSignals(std::function<void()> quit, std::function<void()> reload = nullptr);
  ~ProcessSignals();
  ProcessSignals(const ProcessSignals&) = delete;
  ProcessSignals& operator=(const ProcessSignals&) = delete;

 private:
  struct Wiring;
  std::unique_ptr<Wiring> myWiring;
};

}  // namespace corvane
