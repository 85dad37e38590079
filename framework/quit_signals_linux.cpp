#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>

#include "framework/quit_signals.h"

namespace corvane {

namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM};

// The only thing that the handler may touch: it runs between any two instructions.
std::atomic<int> wakeDescriptor = -1;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void HandleQuitSignal(int /*signal*/) {
  const int savedError = errno;
  const char byte = 0;
  // A full pipe means that the loop has been woken already.
  [[maybe_unused]] const ssize_t written = write(wakeDescriptor.load(), &byte, 1);
  errno = savedError;
}

}  // namespace

struct QuitSignals::Wiring {
  Wiring(std::array<int, 2> pipeEnds, std::function<void()> quitFunction)
      : ends(pipeEnds),
        notifier(pipeEnds[0], QSocketNotifier::Read),
        quit(std::move(quitFunction)) {
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [this] { Wake(); });
    wakeDescriptor = ends[1];
    struct sigaction action {};
    action.sa_handler = HandleQuitSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      sigaction(kSignals[i], &action, &previous[i]);
    }
  }

  ~Wiring() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      sigaction(kSignals[i], &previous[i], nullptr);
    }
    wakeDescriptor = -1;
    notifier.setEnabled(false);
    close(ends[0]);
    close(ends[1]);
  }

  Wiring(const Wiring&) = delete;
  Wiring& operator=(const Wiring&) = delete;

  void Wake() const {
    std::array<char, 64> bytes{};
    while (read(ends[0], bytes.data(), bytes.size()) > 0) {
    }
    quit();
  }

  std::array<int, 2> ends;
  QSocketNotifier notifier;
  std::function<void()> quit;
  std::array<struct sigaction, kSignals.size()> previous{};
};

QuitSignals::QuitSignals(std::function<void()> quit) {
  std::array<int, 2> ends{};
  // Without a pipe the system's own handling stays, which ends the program as well.
  if (pipe2(ends.data(), O_NONBLOCK | O_CLOEXEC) != 0) return;
  myWiring = std::make_unique<Wiring>(ends, std::move(quit));
}

QuitSignals::~QuitSignals() = default;

}  // namespace corvane
