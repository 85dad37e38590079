#include <atomic>
#include <windows.h>

#include <QObject>

#include "platform/process_signals.h"

namespace corvane {
namespace {

// The system calls the handler on a separate thread.
std::atomic<QObject*> receiver = nullptr;
std::function<void()> quitFunction;

BOOL WINAPI HandleConsoleEvent(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  QObject* const target = receiver;
  if (target == nullptr) return FALSE;
  QMetaObject::invokeMethod(
      target, [] { quitFunction(); }, Qt::QueuedConnection);
  return TRUE;
}

}  // namespace

struct ProcessSignals::Wiring {
  explicit Wiring(std::function<void()> quit) {
    quitFunction = std::move(quit);
    receiver = &target;
    SetConsoleCtrlHandler(HandleConsoleEvent, TRUE);
  }
  ~Wiring() {
    SetConsoleCtrlHandler(HandleConsoleEvent, FALSE);
    receiver = nullptr;
  }
  Wiring(const Wiring&) = delete;
  Wiring& operator=(const Wiring&) = delete;

  QObject target;
};

ProcessSignals::ProcessSignals(std::function<void()> quit, std::function<void()>)
    : myWiring(std::make_unique<Wiring>(std::move(quit))) {}

ProcessSignals::~ProcessSignals() = default;

}  // namespace corvane
