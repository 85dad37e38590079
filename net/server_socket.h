#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "framework/address_ranges.h"
#include "net/os_socket.h"
#include "net/socket_core.h"
#include "net/socket_pool.h"
#include "platform/network_interfaces.h"

namespace corvane {

class ProxyHeaderReader;
class TCPSocket;

// A listener with a pool of connection objects that are made ahead. An accepted connection is
// handed off to an idle object, which then raises Connected. If none is idle, or the maximum is
// handed off, the connection is closed without a message. Owns its descriptor, its idle objects and
// connections that wait for a header or their hand-off; shares the active objects with their users.
//
// States: created or closed (no descriptor), listening, stopped (descriptor open, nothing is
// accepted), failed (Error was raised). Listen starts over from any of them. Without descriptors or
// memory it stays listening, pauses for a second and tries again; Error is raised once for that.
// MinimumSocketsAvailable and MaximumSocketsConnected deliberately take effect at the next Listen.
class ServerSocket : public SocketCore {
 public:
  // Raises values below 1 to 1; the setters do not.
  ServerSocket(PollLoop& loop, std::int32_t minimumSocketsAvailable,
               std::int32_t maximumSocketsConnected);
  ~ServerSocket() override;

  // The bound port while listening, else the one that was set. Listen fails for a port outside 0 to
  // 65535.
  std::int32_t Port() const;
  void SetPort(std::int32_t port) { myPort = port; }

  // The interface to listen on; none means all IPv4 addresses.
  std::optional<corvane::NetworkInterface> NetworkInterface;

  // The addresses of proxies, which begin each connection with a header that names its client. The
  // connection waits for it outside the pool, at most HeaderPatience, and is its client's from then
  // on. At most 1024 connections wait, fewer if descriptors run short: the one that has waited
  // longest is closed for the next.
  AddressRanges ProxyAddresses;
  std::chrono::milliseconds HeaderPatience = std::chrono::seconds(5);

  std::int32_t MinimumSocketsAvailable() const { return myMinimum; }
  void SetMinimumSocketsAvailable(std::int32_t value) { myMinimum = value; }
  std::int32_t MaximumSocketsConnected() const { return myMaximum; }
  void SetMaximumSocketsConnected(std::int32_t value);

  // The objects that are handed off and not given back, in hand-off order: an immutable snapshot.
  SocketPool::Active::Snapshot ActiveConnections() const { return myPool.ActiveSockets(); }

  // Starts to listen with a new pool, which is filled in the next pass. Error reports a failure.
  void Listen();
  // Accepts no more; connections and idle objects stay.
  void StopListening();
  // Closes the listener and its idle objects. Connections that were handed off stay connected.
  void Close();
  bool IsListening() const { return myIsListening; }

 protected:
  // Returns whether an accepted connection may stay; if not, it is closed without a message. Called
  // at the accept and again before the hand-off.
  virtual bool Event_Accepted(const os::Endpoint& /*peer*/) { return true; }
  // Returns a new, unconnected object for the pool, or nothing.
  virtual std::shared_ptr<TCPSocket> Event_AddSocket() = 0;
  virtual void Event_Error(std::int32_t /*code*/) {}
  // A proxy's connection was closed because it did not begin with a header.
  virtual void Event_HeaderMissing(const os::Endpoint& /*proxy*/) {}
  // An object entered or left the active list.
  virtual void Event_HandedOff(const std::shared_ptr<TCPSocket>& /*socket*/) {}
  virtual void Event_GivenBack(const std::shared_ptr<TCPSocket>& /*socket*/) {}

  void Advance() override;
  void FillStep() override;
  void RunOutOfMemory() override;

 private:
  friend class TCPSocket;

  void Fail(int error);
  bool MayAccept() const;
  void Accept();
  void AcceptOne();
  void Admit(const os::Accepted& accepted);
  void AwaitHeader(const os::Accepted& accepted);
  void GiveUpOldestProxied();
  void CloseProxied();
  void HandOff(const os::Accepted& accepted);
  void PauseAccepting(int error);
  void GiveBack(const std::shared_ptr<TCPSocket>& socket);
  void LetGo(const std::shared_ptr<TCPSocket>& socket);
  // Asks for so many objects; returns whether AddSocket gave any.
  bool AddSockets(std::int64_t count);

  inline static bool myIsFilling = false;  // one guard for the fill steps of all listeners

  std::int32_t myPort = 0;
  std::int32_t myMinimum;
  std::int32_t myMaximum;
  SocketPool myPool;
  std::deque<std::shared_ptr<ProxyHeaderReader>> myProxied;  // accepted, header not read yet
  std::deque<os::Accepted> myArrived;                        // accepted, not handed off yet
  std::uint64_t myLastHandOff = 0;
  os::SocketHandle myHighestAccepted = os::kNoSocket;
  bool myIsListening = false;
  bool myIsStarved = false;    // AddSocket gave nothing when it was needed
  bool myIsPaused = false;     // out of descriptors or memory
  bool myIsExhausted = false;  // the same, already reported
};

}  // namespace corvane
