// The least that a relay must do, as a yardstick for the server: one thread and epoll. It reads a
// socket until it is empty, frames a report once, appends it to the output of every other member,
// and sends each output once when all ready sockets are read. It accepts any login and stores,
// checks, shows and limits nothing. It trusts its clients: for benchmarks only.
//
//   corvane-limit-relay PORT

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <string_view>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <unordered_map>
#include <utility>
#include <vector>

#include "net/descriptor_limit.h"

namespace {

constexpr std::size_t kHeader = 8;
constexpr std::uint32_t kReport = 4;
constexpr std::uint32_t kMember = 5;
constexpr std::uint32_t kMemberLeft = 6;
constexpr std::uint32_t kBye = 999;
constexpr int kBacklog = 4096;

struct Network;

// Unsent bytes. Appending is most of a relay's work, so it is inline.
class Output {
 public:
  void Append(std::string_view bytes) {
    if (myCapacity - mySize < bytes.size()) Grow(bytes.size());
    std::memcpy(myBytes.get() + mySize, bytes.data(), bytes.size());
    mySize += bytes.size();
  }
  void Consume(std::size_t count) {
    mySize -= count;
    std::memmove(myBytes.get(), myBytes.get() + count, mySize);
  }
  const char* Data() const { return myBytes.get(); }
  std::size_t Size() const { return mySize; }

 private:
  void Grow(std::size_t count) {
    myCapacity = std::max(2 * myCapacity, mySize + count);
    auto grown = std::make_unique_for_overwrite<char[]>(myCapacity);
    std::memcpy(grown.get(), myBytes.get(), mySize);
    myBytes = std::move(grown);
  }

  std::unique_ptr<char[]> myBytes = std::make_unique_for_overwrite<char[]>(64);
  std::size_t mySize = 0;
  std::size_t myCapacity = 64;
};

// The members that an append touches come first and share a cache line.
struct alignas(64) Connection {
  Output output;
  bool isWritten = false;  // on the list of connections to flush
  bool isBlocked = false;  // until the socket is writable
  int descriptor = -1;
  Network* network = nullptr;
  std::string name;
  std::string input;  // the beginning of an incomplete message
};

struct Network {
  std::vector<Connection*> members;
};

std::uint32_t NumberAt(std::string_view bytes, std::size_t place) {
  std::uint32_t number = 0;
  std::memcpy(&number, bytes.data() + place, sizeof number);
  return ntohl(number);
}

void AppendHeader(std::string& message, std::uint32_t command, std::size_t payloadBytes) {
  const std::array<std::uint32_t, 2> header = {
      htonl(static_cast<std::uint32_t>(kHeader + payloadBytes)), htonl(command)};
  message.append(reinterpret_cast<const char*>(header.data()), kHeader);
}

std::string Framed(std::uint32_t command, std::string_view payload) {
  std::string message;
  AppendHeader(message, command, payload.size());
  return message.append(payload);
}

class Relay {
 public:
  explicit Relay(std::uint16_t port);

  [[noreturn]] void Run();

 private:
  void Accept();
  // Reads until the socket is empty; `hasEnded`: until the end of the stream.
  void Drain(Connection& connection, bool hasEnded);
  // Handles the complete messages and returns their length.
  std::size_t Handle(Connection& connection, std::string_view bytes);
  void Handle(Connection& connection, std::uint32_t command, std::string_view payload);
  void RelayToOthers(const Connection& sender, std::string_view message);
  void Append(Connection& recipient, std::string_view bytes);
  void Flush();
  void Write(Connection& connection);
  void Close(Connection& connection);
  void Watch(Connection* connection, int descriptor) const;

  int myListener;
  int myEpoll;
  std::vector<char> myScratch = std::vector<char>(std::size_t{64} * 1024);
  std::string myReport;  // being relayed; kept for its memory
  std::unordered_map<std::string, Network> myNetworks;
  std::unordered_map<int, std::unique_ptr<Connection>> myConnections;
  std::vector<Connection*> myWritten;
  std::vector<std::unique_ptr<Connection>> myClosed;  // kept until the pass is over
};

Relay::Relay(std::uint16_t port)
    : myListener(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)),
      myEpoll(epoll_create1(EPOLL_CLOEXEC)) {
  const int on = 1;
  setsockopt(myListener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(myListener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(myListener, kBacklog) != 0) {
    std::perror("corvane-limit-relay");
    std::exit(1);
  }
  Watch(nullptr, myListener);
}

void Relay::Watch(Connection* connection, int descriptor) const {
  epoll_event event{};
  event.events = EPOLLIN | EPOLLOUT | EPOLLRDHUP | EPOLLET;
  event.data.ptr = connection;
  epoll_ctl(myEpoll, EPOLL_CTL_ADD, descriptor, &event);
}

void Relay::Run() {
  std::array<epoll_event, 512> events;
  for (;;) {
    const int count = epoll_wait(myEpoll, events.data(), static_cast<int>(events.size()), -1);
    for (int i = 0; i < count; ++i) {
      const epoll_event& event = events[static_cast<std::size_t>(i)];
      auto* const connection = static_cast<Connection*>(event.data.ptr);
      if (connection == nullptr) {
        Accept();
        continue;
      }
      if ((event.events & EPOLLOUT) != 0 && std::exchange(connection->isBlocked, false)) {
        Write(*connection);
      }
      if ((event.events & ~static_cast<std::uint32_t>(EPOLLOUT)) != 0) {
        Drain(*connection, (event.events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0);
      }
    }
    Flush();
    myClosed.clear();
  }
}

void Relay::Accept() {
  for (;;) {
    const int descriptor = accept4(myListener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (descriptor < 0) return;
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    auto& connection = myConnections[descriptor];
    connection = std::make_unique<Connection>();
    connection->descriptor = descriptor;
    Watch(connection.get(), descriptor);
    Append(*connection, Framed(1, "Network"));
  }
}

void Relay::Drain(Connection& connection, bool hasEnded) {
  while (connection.descriptor >= 0) {
    const ssize_t count = recv(connection.descriptor, myScratch.data(), myScratch.size(), 0);
    if (count < 0 && errno == EAGAIN) return;
    if (count <= 0) return Close(connection);
    std::string_view bytes(myScratch.data(), static_cast<std::size_t>(count));
    if (connection.input.empty()) {
      bytes.remove_prefix(Handle(connection, bytes));
      connection.input = bytes;
    } else {
      connection.input += bytes;
      const std::string whole = std::exchange(connection.input, {});
      connection.input = whole.substr(Handle(connection, whole));
    }
    // Edge-triggered: the end of the stream is reported once.
    if (!hasEnded && static_cast<std::size_t>(count) < myScratch.size()) return;
  }
}

std::size_t Relay::Handle(Connection& connection, std::string_view bytes) {
  std::size_t taken = 0;
  while (bytes.size() - taken >= kHeader) {
    const std::size_t length = NumberAt(bytes, taken);
    if (length < kHeader || bytes.size() - taken < length) break;
    Handle(connection, NumberAt(bytes, taken + 4), bytes.substr(taken + kHeader, length - kHeader));
    taken += length;
  }
  return taken;
}

void Relay::Handle(Connection& connection, std::uint32_t command, std::string_view payload) {
  switch (command) {
    case 1:
      connection.network = &myNetworks[std::string(payload)];
      return Append(connection, Framed(2, "OK"));
    case 2:
      return Append(connection, Framed(3, "OK"));
    case 3:
      connection.name = payload;
      connection.network->members.push_back(&connection);
      return Append(connection, Framed(4, "OK"));
    case kReport:
      myReport.clear();
      AppendHeader(myReport, kMember, connection.name.size() + 1 + payload.size());
      myReport.append(connection.name).append(1, '|').append(payload);
      return RelayToOthers(connection, myReport);
    case kBye:
      return Append(connection, Framed(kBye, "BYE"));
    default:
      return;
  }
}

void Relay::RelayToOthers(const Connection& sender, std::string_view message) {
  if (sender.network == nullptr) return;
  for (Connection* const member : sender.network->members) {
    if (member != &sender) Append(*member, message);
  }
}

void Relay::Append(Connection& recipient, std::string_view bytes) {
  recipient.output.Append(bytes);
  if (!std::exchange(recipient.isWritten, true)) myWritten.push_back(&recipient);
}

void Relay::Flush() {
  for (Connection* const connection : myWritten) {
    connection->isWritten = false;
    if (!connection->isBlocked && connection->descriptor >= 0) Write(*connection);
  }
  myWritten.clear();
}

void Relay::Write(Connection& connection) {
  const ssize_t count =
      send(connection.descriptor, connection.output.Data(), connection.output.Size(), MSG_NOSIGNAL);
  if (count > 0) connection.output.Consume(static_cast<std::size_t>(count));
  connection.isBlocked = connection.output.Size() > 0;
}

void Relay::Close(Connection& connection) {
  if (connection.network != nullptr) {
    std::erase(connection.network->members, &connection);
    RelayToOthers(connection, Framed(kMemberLeft, connection.name));
  }
  close(connection.descriptor);
  const auto place = myConnections.find(std::exchange(connection.descriptor, -1));
  myClosed.push_back(std::move(place->second));
  myConnections.erase(place);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: corvane-limit-relay PORT\n", stderr);
    return 2;
  }
  corvane::RaiseDescriptorLimit();
  Relay relay(static_cast<std::uint16_t>(std::atoi(argv[1])));
  relay.Run();
}
