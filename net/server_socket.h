#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "net/os_socket.h"
#include "net/socket_core.h"
#include "net/socket_pool.h"
#include "platform/network_interfaces.h"

namespace corvane {

class TCPSocket;

// A listener with a pool of connection objects that are made before they are needed: an accepted
// connection is given to an idle one, which then raises Connected. When none is idle, or as many
// are handed off as may be, the connection is closed without a word.
//
// States: created or closed (no descriptor), listening, stopped (descriptor open, nothing is
// accepted), failed (Error was raised; Listen starts anew).
// MinimumSocketsAvailable and MaximumSocketsConnected take effect at the next Listen: deliberate.
class ServerSocket : public SocketCore {
 public:
  // Values below 1 are raised to 1; the setters do not do that.
  ServerSocket(PollLoop& loop, std::int32_t minimumSocketsAvailable,
               std::int32_t maximumSocketsConnected);
  ~ServerSocket() override;

  // The port that is bound while listening, else the one that was set. One outside 0 to 65535 is
  // an error of Listen.
  std::int32_t Port() const;
  void SetPort(std::int32_t port) { myPort = port; }

  // The interface to listen on; none means all IPv4 addresses.
  std::optional<corvane::NetworkInterface> NetworkInterface;

  std::int32_t MinimumSocketsAvailable() const { return myMinimum; }
  void SetMinimumSocketsAvailable(std::int32_t value) { myMinimum = value; }
  std::int32_t MaximumSocketsConnected() const { return myMaximum; }
  void SetMaximumSocketsConnected(std::int32_t value);

  // The objects handed off and not given back, in hand-off order: an immutable copy.
  SocketPool::Active::Snapshot ActiveConnections() const { return myPool.ActiveSockets(); }

  // Starts listening with a new pool, which is filled in the next pass. Error tells of a failure.
  void Listen();
  // Accepts no more; connections and idle objects stay.
  void StopListening();
  // Closes the listener and its idle objects. Connections that were handed off stay connected.
  void Close();
  bool IsListening() const { return myIsListening; }

 protected:
  // Events: a connection was accepted, and whether it may stay: it is asked again before an object
  // is handed off, and where it may not the connection is closed without a word; one more idle
  // object is needed (nothing may be returned); the listening descriptor failed; an object entered
  // or left the active list.
  virtual bool Event_Accepted(const os::Endpoint& /*peer*/) { return true; }
  virtual std::shared_ptr<TCPSocket> Event_AddSocket() = 0;
  virtual void Event_Error(std::int32_t /*code*/) {}
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
  void HandOff(const os::Accepted& accepted);
  void PauseAccepting(int error);
  void GiveBack(const std::shared_ptr<TCPSocket>& socket);
  void LetGo(const std::shared_ptr<TCPSocket>& socket);
  // Asks for so many objects; whether AddSocket gave any.
  bool AddSockets(std::int64_t count);

  inline static bool myIsFilling = false;  // one guard for the fill steps of all listeners

  std::int32_t myPort = 0;
  std::int32_t myMinimum;
  std::int32_t myMaximum;
  SocketPool myPool;
  std::deque<os::Accepted> myArrived;  // accepted and not handed off yet
  std::uint64_t myLastHandOff = 0;
  os::SocketHandle myLastAccepted = os::kNoSocket;
  bool myIsListening = false;
  bool myIsStarved = false;    // AddSocket gave nothing when it was needed
  bool myIsPaused = false;     // out of descriptors or memory
  bool myIsExhausted = false;  // the same, reported already
};

}  // namespace corvane
