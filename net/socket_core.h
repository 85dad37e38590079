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

// What a connection and a listener have in common: a descriptor that the loop watches, and events
// that become pending and are raised, in a fixed order, when the loop runs the socket's event
// pass. Made with std::make_shared; borrows its loop, which outlives it.
//
// Re-entrancy: while one of its handlers is on the stack a socket is busy, and the loop gives it
// no event pass until that handler has returned.
class SocketCore : public std::enable_shared_from_this<SocketCore> {
 public:
  virtual ~SocketCore();
  SocketCore(const SocketCore&) = delete;
  SocketCore& operator=(const SocketCore&) = delete;

  // The code of the last error, 0 while there was none.
  int LastErrorCode() const { return myLastErrorCode; }
  os::SocketHandle Handle() const { return myHandle; }

  // Raises what is pending: Connected, DataAvailable, SendComplete, the fill step, SendProgress,
  // Error.
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

  // While the result exists, a handler of the socket is on the stack.
  using ScopedFlag = QScopedValueRollback<bool>;
  [[nodiscard]] ScopedFlag BeginHandler() { return ScopedFlag(myIsBusy, true); }

  explicit SocketCore(PollLoop& loop) : myLoop(loop) {}

  // Moves the socket on as far as its descriptor allows, which makes events pending.
  virtual void Advance() = 0;

  virtual void Event_Connected() {}
  virtual void Event_DataAvailable() {}
  virtual void Event_SendComplete() {}
  virtual void FillStep() {}
  virtual void RaiseSendProgress() {}
  virtual void RaiseError() {}
  // A handler did not get the memory that it needed.
  virtual void RunOutOfMemory() = 0;

  // Closes it without an event, when the loop ends.
  virtual void Finish() { CloseDescriptor(); }

  // Makes the event pending and sees that an event pass comes.
  void SetPending(Event event);
  void ClearPending(unsigned events) { myPending &= ~events; }
  bool IsPending(Event event) const { return (myPending & event) != 0; }

  // These return an error code, 0 for success. Makes the descriptor the socket's own, watched by
  // the loop; opens a new one, for a port that has to be one; opens one that listens there, on all
  // addresses where no interface is given.
  int Attach(os::SocketHandle handle);
  int Open(std::int32_t port);
  int OpenToListen(const std::optional<NetworkInterface>& local, std::int32_t port, int queue);
  // Closes the descriptor, if there is one.
  void CloseDescriptor();
  // Keeps the socket alive while it is watched.
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
