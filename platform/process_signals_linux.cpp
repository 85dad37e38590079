#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <map>
#include <string_view>
#include <unistd.h>

#include <QSocketNotifier>

#include "platform/process_signals.h"

namespace corvane {

namespace {

// The only state that the handler uses: it may interrupt any instruction.
std::atomic<int> wakeDescriptor = -1;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void HandleSignal(int signal) {
  const int savedError = errno;
  const char byte = static_cast<char>(signal);
  // If the pipe is full, the loop has been woken already.
  [[maybe_unused]] const ssize_t written = write(wakeDescriptor.load(), &byte, 1);
  errno = savedError;
}

}  // namespace

struct ProcessSignals::Wiring {
  Wiring(std::array<int, 2> pipeEnds, std::function<void()> quitFunction,
         std::function<void()> reloadFunction)
      : ends(pipeEnds),
        notifier(pipeEnds[0], QSocketNotifier::Read),
        quit(std::move(quitFunction)),
        reload(std::move(reloadFunction)) {
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [this] { Wake(); });
    wakeDescriptor = ends[1];
    Take(SIGINT);
    Take(SIGTERM);
    if (reload) Take(SIGHUP);
  }

  ~Wiring() {
    for (const auto& [signal, action] : previous)
      sigaction(signal, &action, nullptr);
    wakeDescriptor = -1;
    notifier.setEnabled(false);
    close(ends[0]);
    close(ends[1]);
  }

  Wiring(const Wiring&) = delete;
  Wiring& operator=(const Wiring&) = delete;

  void Take(int signal) {
    struct sigaction action {};
    action.sa_handler = HandleSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, &previous[signal]);
  }

  void Wake() const {
    bool isToReload = false;
    bool isToQuit = false;
    std::array<char, 64> bytes{};
    for (ssize_t count = 0; (count = read(ends[0], bytes.data(), bytes.size())) > 0;) {
      for (const char byte : std::string_view(bytes.data(), static_cast<std::size_t>(count)))
        (byte == SIGHUP ? isToReload : isToQuit) = true;
    }
    if (isToQuit) {
      quit();
    } else if (isToReload) {
      reload();
    }
  }

  std::array<int, 2> ends;
  QSocketNotifier notifier;
  std::function<void()> quit;
  std::function<void()> reload;
  std::map<int, struct sigaction> previous;
};

ProcessSignals::ProcessSignals(std::function<void()> quit, std::function<void()> reload) {
  std::array<int, 2> ends{};
  // Without a pipe the default action remains, which ends the program as well.
  if (pipe2(ends.data(), O_NONBLOCK | O_CLOEXEC) != 0) return;
  myWiring = std::make_unique<Wiring>(ends, std::move(quit), std::move(reload));
}

ProcessSignals::~ProcessSignals() = default;

}  // namespace corvane
