#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include "net/os_socket.h"
#include "net/socket_address.h"

namespace corvane::os {
namespace {

int Descriptor(SocketHandle handle) {
  return static_cast<int>(handle);
}

int ErrorOf(int result) {
  return result < 0 ? errno : 0;
}

constexpr int kMaxUnacknowledged = 90'000;  // ms
// The system probes a full peer at least every two minutes.
constexpr unsigned kMaxFullSilence = 150'000;  // ms

int SetOption(SocketHandle handle, int level, int option, int value) {
  return ErrorOf(setsockopt(Descriptor(handle), level, option, &value, sizeof value));
}

// Connections inherit the options of their listener, which saves six calls for each.
void SetConnectionOptions(SocketHandle handle) {
  // A minute of silence, then fifteen probes two seconds apart: thousands of connections may probe
  // at the same moment, and a system with a queue of 1000 packets drops the others. 90 s without an
  // acknowledgement end the connection too. Data sent to a silent peer restarts that time, so at
  // worst the two times add up.
  SetOption(handle, IPPROTO_TCP, TCP_NODELAY, 1);
  SetOption(handle, SOL_SOCKET, SO_KEEPALIVE, 1);
  SetOption(handle, IPPROTO_TCP, TCP_KEEPIDLE, 60);
  SetOption(handle, IPPROTO_TCP, TCP_KEEPINTVL, 2);
  SetOption(handle, IPPROTO_TCP, TCP_KEEPCNT, 15);
  SetOption(handle, IPPROTO_TCP, TCP_USER_TIMEOUT, kMaxUnacknowledged);
}

// The result of a call, which is repeated if a signal interrupts it.
template <typename Call>
Transfer TransferOf(const Call& call) {
  ssize_t count;
  do {
    count = call();
  } while (count < 0 && errno == EINTR);
  if (count < 0) return {0, errno};
  return {static_cast<std::size_t>(count), 0};
}

}  // namespace

const int kConnectionReset = ECONNRESET;
const int kTimedOut = ETIMEDOUT;
const int kInvalidArgument = EINVAL;
const int kNoBuffers = ENOBUFS;
const int kOutOfDescriptors = EMFILE;

void TolerateFullPeer(SocketHandle handle, bool tolerates) {
  SetOption(handle, IPPROTO_TCP, TCP_USER_TIMEOUT, tolerates ? 0 : kMaxUnacknowledged);
}

std::uint32_t AcceptBacklog(SocketHandle listener) {
  tcp_info info{};
  socklen_t length = sizeof info;
  // Of a listener this field is the length of its queue.
  const bool isKnown = getsockopt(Descriptor(listener), IPPROTO_TCP, TCP_INFO, &info, &length) == 0;
  return isKnown ? info.tcpi_unacked : 0;
}

bool IsPeerGone(SocketHandle handle) {
  tcp_info info{};
  socklen_t length = sizeof info;
  return getsockopt(Descriptor(handle), IPPROTO_TCP, TCP_INFO, &info, &length) == 0 &&
         info.tcpi_last_ack_recv > kMaxFullSilence;
}

Opened OpenSocket() {
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (descriptor < 0) return {kNoSocket, errno};
  SetConnectionOptions(descriptor);
  return {descriptor, 0};
}

void CloseSocket(SocketHandle handle) {
  close(Descriptor(handle));
}

int UseAddressExclusively(SocketHandle handle) {
  return SetOption(handle, SOL_SOCKET, SO_REUSEADDR, 1);
}

int Bind(SocketHandle handle, const Endpoint& endpoint) {
  sockaddr_in address;
  if (!ToSystem(endpoint, address)) return EINVAL;
  return ErrorOf(bind(Descriptor(handle), Generic(address), sizeof address));
}

int Listen(SocketHandle handle, int backlog) {
  return ErrorOf(listen(Descriptor(handle), backlog));
}

Accepted Accept(SocketHandle listener) {
  sockaddr_in address = {};
  socklen_t length = sizeof address;
  const int descriptor =
      accept4(Descriptor(listener), Generic(address), &length, SOCK_NONBLOCK | SOCK_CLOEXEC);
  return {descriptor, FromSystem(address), ErrorOf(descriptor)};
}

int Connect(SocketHandle handle, const Endpoint& endpoint) {
  sockaddr_in address;
  if (!ToSystem(endpoint, address)) return EINVAL;
  const int error = ErrorOf(connect(Descriptor(handle), Generic(address), sizeof address));
  return error == EINPROGRESS ? 0 : error;
}

int PendingError(SocketHandle handle) {
  int error = 0;
  socklen_t length = sizeof error;
  getsockopt(Descriptor(handle), SOL_SOCKET, SO_ERROR, &error, &length);
  return error;
}

Transfer Receive(SocketHandle handle, std::span<char> buffer) {
  return TransferOf([&] { return recv(Descriptor(handle), buffer.data(), buffer.size(), 0); });
}

Transfer Peek(SocketHandle handle, std::span<char> buffer) {
  return TransferOf(
      [&] { return recv(Descriptor(handle), buffer.data(), buffer.size(), MSG_PEEK); });
}

Transfer Send(SocketHandle handle, std::span<const std::string_view> pieces) {
  if (pieces.size() == 1) {  // the usual case, and cheaper
    const std::string_view only = pieces.front();
    return TransferOf(
        [&] { return send(Descriptor(handle), only.data(), only.size(), MSG_NOSIGNAL); });
  }
  std::array<iovec, kMaxPieces> parts;
  for (std::size_t i = 0; i < pieces.size(); ++i)
    parts[i] = {const_cast<char*>(pieces[i].data()), pieces[i].size()};
  msghdr message = {};
  message.msg_iov = parts.data();
  message.msg_iovlen = pieces.size();
  return TransferOf([&] { return sendmsg(Descriptor(handle), &message, MSG_NOSIGNAL); });
}

void EndSending(SocketHandle handle) {
  shutdown(Descriptor(handle), SHUT_WR);
}

Endpoint LocalEndpoint(SocketHandle handle) {
  sockaddr_in address = {};
  socklen_t length = sizeof address;
  if (getsockname(Descriptor(handle), Generic(address), &length) < 0) return {};
  return FromSystem(address);
}

bool WouldBlock(int error) {
  return error == EAGAIN || error == EWOULDBLOCK;
}

bool IsOutOfDescriptors(int error) {
  return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

bool IsPassingAcceptError(int error) {
  // accept(2) also returns pending errors of the new connection.
  switch (error) {
    case EINTR:
    case ECONNABORTED:
    case EPERM:
    case EPROTO:
    case ENOPROTOOPT:
    case ENETDOWN:
    case ENONET:
    case ENETUNREACH:
    case EHOSTDOWN:
    case EHOSTUNREACH:
    case ETIMEDOUT:
      return true;
    default:
      return false;
  }
}

}  // namespace corvane::os
