#include "bench/sink.h"

#include <array>
#include <sys/epoll.h>
#include <unistd.h>

#include <QCryptographicHash>

#include "net/frame.h"

namespace corvane {

Sink::Sink() : myPoller(epoll_create1(EPOLL_CLOEXEC)), myThread([this] { Drain(); }) {}

Sink::~Sink() {
  myIsOver = true;
  myThread.join();
  for (const os::SocketHandle client : myClients)
    os::CloseSocket(client);
  close(myPoller);
}

void Sink::LogIn(std::int32_t port, std::string_view network, std::string_view password,
                 const std::string& user) {
  const os::SocketHandle client = os::OpenSocket().handle;
  os::Connect(client, {"127.0.0.1", static_cast<std::uint16_t>(port)});
  const QByteArrayView secret(password.data(), static_cast<qsizetype>(password.size()));
  const std::string digest =
      QCryptographicHash::hash(secret, QCryptographicHash::Md5).toStdString();
  os::Send(client, CreatePacket(1, network) + CreatePacket(2, digest) + CreatePacket(3, user));
  epoll_event event = {};
  event.events = EPOLLIN;
  event.data.fd = static_cast<int>(client);
  epoll_ctl(myPoller, EPOLL_CTL_ADD, static_cast<int>(client), &event);
  myClients.push_back(client);
}

void Sink::Drain() {
  std::array<epoll_event, 256> events;
  std::array<char, 64 * 1024> buffer;
  while (!myIsOver) {
    const int count = epoll_wait(myPoller, events.data(), static_cast<int>(events.size()), 10);
    for (int i = 0; i < count; ++i) {
      os::Receive(events[static_cast<std::size_t>(i)].data.fd, buffer);
    }
  }
}

}  // namespace corvane
