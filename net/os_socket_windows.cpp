#include <algorithm>
#include <string>
#include <winsock2.h>
// These need winsock2.h before them.
#include <mstcpip.h>
#include <windows.h>
#include <ws2tcpip.h>

#include "net/os_socket.h"
#include "net/socket_address.h"

namespace corvane::os {
namespace {

constexpr int kMaximumRetransmission = 5;  // TCP_MAXRT, in seconds; mingw-w64 does not name it

// Sockets work as long as an object of this class exists.
class Winsock {
 public:
  Winsock() : myError(WSAStartup(MAKEWORD(2, 2), &myData)) {}
  ~Winsock() {
    if (myError == 0) WSACleanup();
  }
  Winsock(const Winsock&) = delete;
  Winsock& operator=(const Winsock&) = delete;

  int Error() const { return myError; }

 private:
  WSADATA myData = {};
  int myError;
};

SOCKET Socket(SocketHandle handle) {
  return static_cast<SOCKET>(handle);
}

int ErrorOf(int result) {
  return result == SOCKET_ERROR ? WSAGetLastError() : 0;
}

int SetOption(SOCKET socket, int level, int option, DWORD value) {
  return ErrorOf(
      setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value));
}

// Set for each connection: it does not inherit all of a listener's options.
void SetConnectionOptions(SOCKET socket) {
  u_long on = 1;
  ioctlsocket(socket, FIONBIO, &on);
  SetOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
  // A minute of silence, then the system's ten probes, three seconds apart. 90 s without an
  // acknowledgement end the connection too.
  tcp_keepalive keepAlive = {1, 60'000, 3'000};
  DWORD unused = 0;
  WSAIoctl(socket, SIO_KEEPALIVE_VALS, &keepAlive, sizeof keepAlive, nullptr, 0, &unused, nullptr,
           nullptr);
  SetOption(socket, IPPROTO_TCP, kMaximumRetransmission, 90);
}

Transfer TransferOf(int count) {
  if (count == SOCKET_ERROR) return {0, WSAGetLastError()};
  return {static_cast<std::size_t>(count), 0};
}

// How much to receive or send with one call. The system would copy a send of any length into its
// memory, or fail if it has none.
int Piece(std::size_t bytes) {
  constexpr std::size_t kMaxPiece = 64 * 1024;
  return static_cast<int>(std::min(bytes, kMaxPiece));
}

}  // namespace

const int kConnectionReset = WSAECONNRESET;
const int kTimedOut = WSAETIMEDOUT;
const int kInvalidArgument = WSAEINVAL;
const int kNoBuffers = WSAENOBUFS;
const int kOutOfDescriptors = WSAEMFILE;

// This system ends a connection only if nothing is acknowledged, and a full peer acknowledges
// probes.
void TolerateFullPeer(SocketHandle /*handle*/, bool /*tolerates*/) {}

std::uint32_t AcceptBacklog(SocketHandle /*listener*/) {
  return 0;
}

bool IsPeerGone(SocketHandle /*handle*/) {
  return false;
}

Opened OpenSocket() {
  static const Winsock winsock;
  if (winsock.Error() != 0) return {kNoSocket, winsock.Error()};
  const SOCKET opened = WSASocketW(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                                   WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
  if (opened == INVALID_SOCKET) return {kNoSocket, WSAGetLastError()};
  SetConnectionOptions(opened);
  return {static_cast<SocketHandle>(opened), 0};
}

void CloseSocket(SocketHandle handle) {
  closesocket(Socket(handle));
}

int UseAddressExclusively(SocketHandle handle) {
  return SetOption(Socket(handle), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, 1);
}

int Bind(SocketHandle handle, const Endpoint& endpoint) {
  sockaddr_in address;
  if (!ToSystem(endpoint, address)) return WSAEINVAL;
  return ErrorOf(bind(Socket(handle), Generic(address), sizeof address));
}

int Listen(SocketHandle handle, int backlog) {
  // A negative number (SOMAXCONN_HINT, which mingw-w64 does not name) is taken as it is; a positive
  // one would be cut to 200.
  return ErrorOf(listen(Socket(handle), -backlog));
}

Accepted Accept(SocketHandle listener) {
  sockaddr_in address = {};
  int length = sizeof address;
  const SOCKET accepted = accept(Socket(listener), Generic(address), &length);
  if (accepted == INVALID_SOCKET) return {kNoSocket, {}, WSAGetLastError()};
  SetHandleInformation(reinterpret_cast<HANDLE>(accepted), HANDLE_FLAG_INHERIT, 0);
  SetConnectionOptions(accepted);
  return {static_cast<SocketHandle>(accepted), FromSystem(address), 0};
}

int Connect(SocketHandle handle, const Endpoint& endpoint) {
  sockaddr_in address;
  if (!ToSystem(endpoint, address)) return WSAEINVAL;
  const int error = ErrorOf(connect(Socket(handle), Generic(address), sizeof address));
  return error == WSAEWOULDBLOCK ? 0 : error;
}

int PendingError(SocketHandle handle) {
  int error = 0;
  int length = sizeof error;
  getsockopt(Socket(handle), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &length);
  return error;
}

Transfer Receive(SocketHandle handle, std::span<char> buffer) {
  return TransferOf(recv(Socket(handle), buffer.data(), Piece(buffer.size()), 0));
}

Transfer Peek(SocketHandle handle, std::span<char> buffer) {
  return TransferOf(recv(Socket(handle), buffer.data(), Piece(buffer.size()), MSG_PEEK));
}

Transfer Send(SocketHandle handle, std::span<const std::string_view> pieces) {
  // The system reports new room only after a call that would block, not after a partial one.
  std::size_t sent = 0;
  for (std::string_view rest : pieces) {
    while (!rest.empty()) {
      const Transfer part = TransferOf(send(Socket(handle), rest.data(), Piece(rest.size()), 0));
      sent += part.bytes;
      rest.remove_prefix(part.bytes);
      if (part.error != 0) return {sent, sent > 0 && WouldBlock(part.error) ? 0 : part.error};
    }
  }
  return {sent, 0};
}

void EndSending(SocketHandle handle) {
  shutdown(Socket(handle), SD_SEND);
}

Endpoint LocalEndpoint(SocketHandle handle) {
  sockaddr_in address = {};
  int length = sizeof address;
  if (getsockname(Socket(handle), Generic(address), &length) != 0) return {};
  return FromSystem(address);
}

bool WouldBlock(int error) {
  return error == WSAEWOULDBLOCK;
}

bool IsOutOfDescriptors(int error) {
  return error == WSAEMFILE || error == WSAENOBUFS;
}

bool IsPassingAcceptError(int error) {
  return error == WSAECONNRESET || error == WSAECONNABORTED || error == WSAEINTR ||
         error == WSAENETDOWN;
}

}  // namespace corvane::os
