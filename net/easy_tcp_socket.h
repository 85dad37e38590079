#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "buffers/byte_queue.h"
#include "net/frame.h"
#include "net/message_budget.h"
#include "net/poll_loop.h"
#include "net/tcp_socket.h"

namespace corvane {

// A connection that carries whole messages, each a command number with a payload of bytes (see
// frame.h), in place of a stream: raw reading and writing is refused. Messages are cut as their
// bytes arrive and delivered one a pass, in order; the peer is read again when all are delivered.
// A length that no message can or may have closes the connection. Nothing is delivered while the
// peer has yet to take as much as a connection may hold. Delayed messages of a peer that has ended
// its sending are dropped when it has taken no bytes for two seconds.
class EasyTCPSocket : public TCPSocket, public _Pollable {
 public:
  explicit EasyTCPSocket(PollLoop& loop);

  // Sends one message; does nothing unless connected.
  void SendMessage(std::int32_t command, std::string_view data);

  // The same with a payload that stands in blocks, whose bytes are not copied.
  void SendMessage(std::int32_t command, std::span<const Slice> payload);

  // Sends whole messages as they are, to many receivers.
  void SendPackets(const Slice& packets) { TCPSocket::Write(packets); }

  // Waits for a message with this command and returns its payload; empty when so many seconds have
  // passed, on an error, and when not connected. Every other message that arrives meanwhile is
  // dropped: deliberate. Other sockets are served while it waits.
  std::string WaitForMessage(std::int32_t command, std::int32_t timeoutSeconds);

  // Waits for the connection to come up; whether it did.
  bool WaitForConnection(std::int32_t timeoutSeconds);

  void Close() override;
  // Drops messages that wait for delivery, too.
  void Purge() override;
  std::size_t InputHeld() const override { return TCPSocket::InputHeld() + mEvents.Capacity(); }

  // Refused: each throws RuntimeException.
  std::string Read(std::size_t count) override;
  std::string ReadAll() override;
  void Write(std::string_view bytes) override;

  // Queued messages, each delivered by one poll.
  bool _Poll() override;
  bool IsDue() const { return HasQueued() && !IsBusy(); }
  bool StaysQueued() override { return myIsQueued = HasQueued(); }

 protected:
  // Events for subclasses. The payload is valid until the handler returns.
  virtual void Connected() {}
  virtual void Error(std::int32_t /*code*/) {}
  virtual void ReceivedMessage(std::int32_t /*command*/, std::string_view /*data*/) {}

  // Asked before a message is delivered: how long it has to wait. It is asked again then. The
  // answer may not end the connection.
  virtual PollLoop::Clock::duration MustWait(std::int32_t /*command*/) { return {}; }

  // The longest whole message, in bytes, that may arrive from now on.
  void LimitMessages(std::size_t longest) { myLongestMessage = longest; }
  // How many messages are delivered from now on; those that come faster wait.
  void LimitRate(const MessageRate& rate) { myBudget.Limit(rate); }
  // For how long what waits is still delivered, once the peer has ended its sending and takes no
  // bytes any more.
  void SetGonePatience(std::chrono::seconds patience) { myGonePatience = patience; }

  // While held, messages queue up and none is delivered.
  void HoldMessages(bool held);
  // Holds them for so long.
  void DelayMessages(PollLoop::Clock::duration delay);

  void Event_Connected() override;
  void Event_DataAvailable() override { ProcessData(); }
  void Event_Error() override;
  bool HoldsInput() const override { return !mEvents.IsEmpty(); }

 private:
  void ProcessData();
  // Takes what the wait is for; whether a wait is on, in which case the message is not queued.
  bool AnswerWait(const Frame& frame);
  bool WaitingForThisMessage(std::int32_t command) const;
  bool HasQueued() const {
    return myIsDispatching && !myIsHeld && myDelays == 0 && !mEvents.IsEmpty();
  }
  void EndDelay();
  void AddEvents(std::size_t bytes);
  void RequestDispatch();
  void FireEvents();
  void StopDispatching();

  ByteQueue& mDataBuffer = Input();  // what has arrived and is no whole message yet
  ByteQueue mEvents;                 // whole messages waiting for delivery, as they came
  std::string mCommandResponse;
  std::int32_t mWaitForThisCommand = -1;
  bool mWaitingForACommand = false;
  std::size_t myLongestMessage = std::numeric_limits<std::size_t>::max();
  MessageBudget myBudget;
  bool myIsDispatching = false;
  bool myIsHeld = false;
  int myDelays = 0;  // that have not passed yet
  std::chrono::seconds myGonePatience{2};
  // After the peer ended its sending: when it was last known to be there, and what it had taken.
  std::optional<PollLoop::Clock::time_point> myEndSeen;
  std::size_t mySentBefore = 0;
  bool myIsQueued = false;  // on the loop's list
};

}  // namespace corvane
