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

// epoll, edge-triggered. A socket's interest in reading and writing is registered once and never
// changed. The epoll descriptor is readable while a socket is ready, which wakes Qt.
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

  int descriptor;
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

std::span<const Poller::Ready> Poller::Wait(std::chrono::milliseconds patience) {
  mySystem->ready.clear();
  const int most = static_cast<int>(mySystem->events.size());
  int count = most;
  while (count == most) {
    count = epoll_wait(mySystem->descriptor, mySystem->events.data(), most,
                       static_cast<int>(std::exchange(patience, 0ms).count()));
    if (count < 0 && errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "epoll_wait");
    }
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
