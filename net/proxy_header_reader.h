#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "net/os_socket.h"
#include "net/socket_core.h"

namespace corvane {

// Reads the header of one connection from a proxy before a session sees the connection. Receives
// exactly the header, so the client's first byte is the next to be received, and the poller reports
// it to the session as for any connection. Owns the descriptor; borrows the loop.
//
// States: reading; ended, without a descriptor.
// Limits: keeps the first kMaxProxyHeaderRead bytes of the header.
class ProxyHeaderReader : public SocketCore {
 public:
  explicit ProxyHeaderReader(PollLoop& loop) : SocketCore(loop) {}

  // Event: the connection, which is the handler's, with its client's address; or, if no header came
  // and the connection is closed, no handle and the proxy's address. Raised once, unless Close is
  // called first. Must be set.
  std::function<void(ProxyHeaderReader&, const os::Accepted&)> Ended;

  // Starts to read, for at most so long. Returns false if the loop cannot watch the descriptor.
  bool Begin(const os::Accepted& accepted, std::chrono::milliseconds patience);
  // Ends now: with the header if it has arrived, else without one.
  void GiveUp();
  // Closes the connection without an event.
  void Close() { CloseDescriptor(); }

 protected:
  void Advance() override;
  void RunOutOfMemory() override { Refuse(); }

 private:
  void Read();
  void Skip();
  // After a transfer of no bytes.
  void EndOrWait(const os::Transfer& nothing);
  void Refuse();

  os::Endpoint myProxy;
  os::Endpoint myClient;
  std::string myBytes;     // of the header, until it is known
  std::size_t myLeft = 0;  // bytes of the known header that are still to be received
};

}  // namespace corvane
