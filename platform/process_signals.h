#pragma once

#include <functional>
#include <memory>

namespace corvane {

// Turns process signals into calls from Qt's event loop: requests to quit (SIGINT and SIGTERM on
// Linux, Ctrl+C and Ctrl+Break on Windows) and, on Linux, the request to reload (SIGHUP). Restores
// the previous handling when destroyed. Only one may exist at a time; needs a QCoreApplication.
class ProcessSignals {
 public:
  // Without `reload`, SIGHUP keeps its default action.
  explicit ProcessSignals(std::function<void()> quit, std::function<void()> reload = nullptr);
  ~ProcessSignals();
  ProcessSignals(const ProcessSignals&) = delete;
  ProcessSignals& operator=(const ProcessSignals&) = delete;

 private:
  struct Wiring;
  std::unique_ptr<Wiring> myWiring;
};

}  // namespace corvane
