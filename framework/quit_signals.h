#pragma once

#include <functional>
#include <memory>

namespace corvane {

// Turns the system's requests to end (SIGINT and SIGTERM on Linux, Ctrl+C and Ctrl+Break on
// Windows) into a call from Qt's event loop, and restores the system's own handling when it is
// destroyed. One at a time; needs a QCoreApplication.
class QuitSignals {
 public:
  explicit QuitSignals(std::function<void()> quit);
  ~QuitSignals();
  QuitSignals(const QuitSignals&) = delete;
  QuitSignals& operator=(const QuitSignals&) = delete;

 private:
  struct Wiring;
  std::unique_ptr<Wiring> myWiring;
};

}  // namespace corvane
