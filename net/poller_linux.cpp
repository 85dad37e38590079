#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include <QSocketNotifier>

#include "net/poller.h"

namespace corvane {

using namespace std::chrono_literals;

// Edge-triggered, with reading and writing asked for once and for all: no system call changes the
// interest of a socket afterwards. The epoll descriptor itself is readable while something is
// ready, which is what wakes Qt.
struct Poller::System {
  explicit System(std::function<void()> wake)
      : descriptor(epoll_create1(EPOLL_CLOEXEC)), notifier(descriptor, QSocketNotifier::Read) {
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "epoll_create1");
    QObject::connect(&notifier, &QSocketNotifier::activated, std::move(wake));
  }
  ~System() {
    notifier.setEnabled(false);
    close(descriptor);
  }
  System(const System&) = delete;
  System& operator=(const System&) = delete;

  int Collect(std::chrono::microseconds patience);

  int descriptor;
  bool hasFineTimeouts = true;
  QSocketNotifier notifier;
  std::array<epoll_event, 512> events;
  std::vector<Ready> ready;
};

Poller::Poller(std::function<void()> wake) : mySystem(std::make_unique<System>(std::move(wake))) {}

Poller::~Poller() = default;

int Poller::Add(os::SocketHandle handle, std::uint64_t token) {
  epoll_event event = {};
  event.events = EPOLLIN | EPOLLOUT | EPOLLRDHUP | EPOLLET;
  event.data.u64 = token;
  const int result =
      epoll_ctl(mySystem->descriptor, EPOLL_CTL_ADD, static_cast<int>(handle), &event);
  return result < 0 ? errno : 0;
}

void Poller::Remove(os::SocketHandle handle) {
  epoll_ctl(mySystem->descriptor, EPOLL_CTL_DEL, static_cast<int>(handle), nullptr);
}

void Poller::Quiet() {
  mySystem->notifier.setEnabled(false);
}

// How many of `events` were filled. Throws where the system refuses to tell.
int Poller::System::Collect(std::chrono::microseconds patience) {
  const int most = static_cast<int>(events.size());
  int count = -1;
  if (hasFineTimeouts) {
    const timespec timeout{static_cast<time_t>(patience / 1s), (patience % 1s) / 1ns};
    count = epoll_pwait2(descriptor, events.data(), most, &timeout, nullptr);
    // Kernels before 5.11 do not know the call, containers may forbid it.
    hasFineTimeouts = count >= 0 || (errno != ENOSYS && errno != EPERM);
  }
  if (!hasFineTimeouts) {
    const auto timeout = std::chrono::ceil<std::chrono::milliseconds>(patience);
    count = epoll_wait(descriptor, events.data(), most, static_cast<int>(timeout.count()));
  }
  if (count >= 0) return count;
  if (errno == EINTR) return 0;
  throw std::system_error(errno, std::generic_category(), "epoll_wait");
}

std::span<const Poller::Ready> Poller::Wait(std::chrono::microseconds patience) {
  mySystem->ready.clear();
  const int most = static_cast<int>(mySystem->events.size());
  int count = most;
  while (count == most) {
    count = mySystem->Collect(std::exchange(patience, 0us));
    for (int i = 0; i < count; ++i) {
      const epoll_event& event = mySystem->events[static_cast<std::size_t>(i)];
      const bool hungUp = (event.events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0;
      mySystem->ready.push_back({event.data.u64, hungUp || (event.events & EPOLLIN) != 0,
                                 hungUp || (event.events & EPOLLOUT) != 0, hungUp});
    }
  }
  return mySystem->ready;
}

}  // namespace corvane
