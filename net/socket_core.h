#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include <QScopedValueRollback>

#include "net/os_socket.h"
#include "net/poller.h"
#include "platform/network_interfaces.h"

namespace corvane {

class PollLoop;

// The base of connection and listener: a descriptor that the loop watches, and events that become
// pending and are raised, in a fixed order, when the loop runs the socket's event pass. Made with
// std::make_shared; owns the descriptor; borrows its loop, which outlives it.
//
// Re-entrancy: while one of its handlers is on the stack a socket is busy, and the loop gives it
// no event pass until that handler has returned.
class SocketCore : public std::enable_shared_from_this<SocketCore> {
 public:
  virtual ~SocketCore();
  SocketCore(const SocketCore&) = delete;
  SocketCore& operator=(const SocketCore&) = delete;

  // The system's code of the last error, 0 for none.
  int LastErrorCode() const { return myLastErrorCode; }
  os::SocketHandle Handle() const { return myHandle; }

  // Raises the pending events: Connected, DataAvailable, SendComplete, the fill step, SendProgress,
  // Error, in this order.
  void EventPass();

 protected:
  enum Event : unsigned {
    kConnected = 1,
    kDataAvailable = 2,
    kSendComplete = 4,
    kFill = 8,
    kSendProgress = 16,
    kError = 32
  };

  // Marks the socket as busy until the result is destroyed: a handler is on the stack.
  using ScopedFlag = QScopedValueRollback<bool>;
  [[nodiscard]] ScopedFlag BeginHandler() { return ScopedFlag(myIsBusy, true); }

  explicit SocketCore(PollLoop& loop) : myLoop(loop) {}

  // Accepts, connects, sends and receives as far as the descriptor allows; makes events pending.
  virtual void Advance() = 0;

  virtual void Event_Connected() {}
  virtual void Event_DataAvailable() {}
  virtual void Event_SendComplete() {}
  virtual void FillStep() {}
  virtual void RaiseSendProgress() {}
  virtual void RaiseError() {}
  // Called when a handler threw std::bad_alloc.
  virtual void RunOutOfMemory() = 0;

  // Closes the socket without an event, at the end of the loop.
  virtual void Finish() { CloseDescriptor(); }

  // Makes the event pending and requests an event pass.
  void SetPending(Event event);
  void ClearPending(unsigned events) { myPending &= ~events; }
  bool IsPending(Event event) const { return (myPending & event) != 0; }

  // These return an error code, 0 for success.
  // Takes the descriptor over and makes the loop watch it.
  int Attach(os::SocketHandle handle);
  // Opens a new descriptor; fails for a port outside 0 to 65535.
  int Open(std::int32_t port);
  // The same, and listens: without an interface on all addresses.
  int OpenToListen(const std::optional<NetworkInterface>& local, std::int32_t port, int backlog);
  // Returns the descriptor, which is the caller's from now on; the loop stops watching it.
  os::SocketHandle ReleaseDescriptor();
  // Closes the descriptor, if there is one.
  void CloseDescriptor();
  // Makes the loop keep the socket alive until its descriptor is no longer watched.
  void KeepAlive();

  bool IsBusy() const { return myIsBusy; }

  PollLoop& myLoop;
  int myLastErrorCode = 0;
  bool myIsReadable = false;
  bool myIsWritable = false;
  bool myIsHungUp = false;

 private:
  friend class PollLoop;

  bool Take(Event event);
  void NoteReady(const Poller::Ready& ready);

  os::SocketHandle myHandle = os::kNoSocket;
  std::uint64_t myToken = 0;  // 0: not watched
  std::shared_ptr<SocketCore> myKeep;
  unsigned myPending = 0;
  bool myIsBusy = false;
  bool myIsInPass = false;
  bool myAwaitsPass = false;
};

}  // namespace corvane
