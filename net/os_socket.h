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
  std::string address;  // dotted IPv4; empty for all of the machine's addresses
  std::uint16_t port = 0;
};

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

// A socket that sends at once what is written (no Nagle delay) and notices a peer that is gone
// without a word within three minutes at most. Those that it accepts are the same.
Opened OpenSocket();
void CloseSocket(SocketHandle handle);
// Where the system takes a peer that has no room for one that is gone (Linux does), it ends a
// connection after 90 s of either. With tolerance it ends neither; then ask IsPeerGone.
void TolerateFullPeer(SocketHandle handle, bool tolerates);
// Whether a peer that has no room has acknowledged nothing for so long that it must be gone.
bool IsPeerGone(SocketHandle handle);

// Lets nobody else listen on the address that is bound next, but allows it while closed connections
// of an earlier listener linger.
int UseAddressExclusively(SocketHandle handle);
int Bind(SocketHandle handle, const Endpoint& endpoint);
// `queue` is how many new connections the system keeps until they are accepted.
int Listen(SocketHandle handle, int queue);
Accepted Accept(SocketHandle listener);

// Starts connecting; 0 also while it is still under way, PendingError tells how it ended.
int Connect(SocketHandle handle, const Endpoint& endpoint);
int PendingError(SocketHandle handle);

// 0 bytes without an error: the peer will send no more.
Transfer Receive(SocketHandle handle, std::span<char> buffer);
// The pieces in their order, at most kMostPieces. Fewer bytes than were given, or WouldBlock: there
// is no room, and the poller tells when there is.
inline constexpr std::size_t kMostPieces = 16;
Transfer Send(SocketHandle handle, std::span<const std::string_view> pieces);
inline Transfer Send(SocketHandle handle, std::string_view bytes) {
  return Send(handle, std::span(&bytes, 1));
}
void EndSending(SocketHandle handle);

Endpoint LocalEndpoint(SocketHandle handle);

// What an error code means.
bool WouldBlock(int error);
bool IsOutOfDescriptors(int error);    // or of memory: it may work again later
bool IsPassingAcceptError(int error);  // one connection failed, the listener did not

// The system's codes for what is found out here.
extern const int kConnectionReset;
extern const int kTimedOut;
extern const int kInvalidArgument;
extern const int kNoBuffers;
extern const int kOutOfDescriptors;

}  // namespace corvane::os
