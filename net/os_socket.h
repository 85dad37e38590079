#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <QtGlobal>

// The operating system's TCP sockets over IPv4, without their platform differences. All are
// non-blocking. An error is the system's own socket error code, 0 for success.
namespace corvane::os {

using SocketHandle = qintptr;
inline constexpr SocketHandle kNoSocket = -1;

struct Endpoint {
  std::string address;  // dotted IPv4, or IPv6 for a proxy's client; empty: all of the machine
  std::uint16_t port = 0;
};

// The outcome of sending or receiving.
struct Transfer {
  std::size_t bytes = 0;
  int error = 0;
};

struct Accepted {
  SocketHandle handle = kNoSocket;
  Endpoint peer;
  int error = 0;
};

struct Opened {
  SocketHandle handle = kNoSocket;
  int error = 0;
};

// A socket that sends without delay (TCP_NODELAY) and fails within three minutes when its peer has
// vanished. So do the connections that it accepts.
Opened OpenSocket();
void CloseSocket(SocketHandle handle);
// By default Linux ends a connection whose peer's receive window has been full for 90 s, just as if
// the peer had vanished. With `tolerates` it ends neither, so the caller has to ask IsPeerGone.
void TolerateFullPeer(SocketHandle handle, bool tolerates);
// Whether a peer with a full receive window has acknowledged nothing for so long that it must be
// gone.
bool IsPeerGone(SocketHandle handle);

// Call it before Bind: the bound address then belongs to this listener alone. Closed connections of
// an earlier listener that still linger do not make Bind fail.
int UseAddressExclusively(SocketHandle handle);
int Bind(SocketHandle handle, const Endpoint& endpoint);
int Listen(SocketHandle handle, int backlog);
Accepted Accept(SocketHandle listener);
// How many connections wait to be accepted; 0 where the system does not say.
std::uint32_t AcceptBacklog(SocketHandle listener);

// Starts to connect and returns 0 while that is in progress. When the socket is writable,
// PendingError returns the outcome.
int Connect(SocketHandle handle, const Endpoint& endpoint);
int PendingError(SocketHandle handle);

// 0 bytes without an error: the peer will send no more.
Transfer Receive(SocketHandle handle, std::span<char> buffer);
// The same, but leaves the bytes to be received again.
Transfer Peek(SocketHandle handle, std::span<char> buffer);
// Sends the pieces in order, at most kMaxPieces. Fewer bytes than given, or WouldBlock: there is no
// more room, and the poller reports when there is.
inline constexpr std::size_t kMaxPieces = 16;
Transfer Send(SocketHandle handle, std::span<const std::string_view> pieces);
inline Transfer Send(SocketHandle handle, std::string_view bytes) {
  return Send(handle, std::span(&bytes, 1));
}
// Ends the sending side only; receiving goes on.
void EndSending(SocketHandle handle);

Endpoint LocalEndpoint(SocketHandle handle);

// The meanings of error codes.
bool WouldBlock(int error);
bool IsOutOfDescriptors(int error);    // or of memory: may work again later
bool IsPassingAcceptError(int error);  // one connection failed, the listener did not

// The system's codes of errors that are found here.
extern const int kConnectionReset;
extern const int kTimedOut;
extern const int kInvalidArgument;
extern const int kNoBuffers;
extern const int kOutOfDescriptors;

}  // namespace corvane::os
