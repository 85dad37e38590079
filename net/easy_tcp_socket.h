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

// A connection that carries whole messages, each a command number and a payload (frame.h), instead
// of a stream: raw reading and writing is refused.
//
// Messages are framed as their bytes arrive and delivered in order, one a pass. The peer is read
// again when all are delivered. Delivery waits while messages are held or delayed, while the peer
// exceeds its rate, and while the output is full.
// A length below a header's, or above the limit, closes the connection without an event. Waiting
// messages of a peer that has ended its sending are dropped when it takes no bytes for two seconds.
class EasyTCPSocket : public TCPSocket, public _Pollable {
 public:
  explicit EasyTCPSocket(PollLoop& loop);

  // Sends one message; does nothing unless connected.
  void SendMessage(std::int32_t command, std::string_view data);

  // The same; the payload's bytes are shared, not copied.
  void SendMessage(std::int32_t command, std::span<const SharedBytes> payload);

  // Sends bytes that are whole messages already, shared among many receivers.
  void SendPackets(const SharedBytes& packets) { TCPSocket::Write(packets); }

  // Waits for a message with this command and returns its payload; empty after the timeout, on an
  // error, and when not connected. Deliberately drops every other message that arrives meanwhile.
  // Other sockets are served while it waits.
  std::string WaitForMessage(std::int32_t command, std::int32_t timeoutSeconds);

  // Waits for the connection to be established; returns whether it was.
  bool WaitForConnection(std::int32_t timeoutSeconds);

  void Close() override;
  // Drops waiting messages, too.
  void Purge() override;
  std::size_t InputHeld() const override { return TCPSocket::InputHeld() + mEvents.Capacity(); }

  // Refused: each throws RuntimeException.
  std::string Read(std::size_t count) override;
  std::string ReadAll() override;
  void Write(std::string_view bytes) override;

  // Delivers one message. Returns whether it did.
  bool _Poll() override;
  // Whether a message can be delivered now.
  bool IsDue() const { return HasQueued() && !IsBusy(); }
  bool StaysQueued() override { return myIsQueued = HasQueued(); }

 protected:
  // Events for subclasses. The payload is valid until the handler returns.
  virtual void Connected() {}
  virtual void Error(std::int32_t /*code*/) {}
  virtual void ReceivedMessage(std::int32_t /*command*/, std::string_view /*data*/) {}

  // Returns how long the next message has to wait, zero if it can be delivered now. Called before a
  // delivery, and again after the wait. Must not end the connection.
  virtual PollLoop::Clock::duration MustWait(std::int32_t /*command*/) { return {}; }

  // Limits the length of a message, in bytes with its header, from now on.
  void LimitMessages(std::size_t maxBytes) { myMaxMessageBytes = maxBytes; }
  // Limits the rate of delivery from now on; messages above it wait.
  void LimitRate(const MessageRate& rate) { myBudget.Limit(rate); }
  // For how long waiting messages are still delivered to a peer that has ended its sending and
  // takes no more bytes. 2 s by default.
  void SetGonePatience(std::chrono::seconds patience) { myGonePatience = patience; }

  // While held, messages are queued and not delivered.
  void HoldMessages(bool held);
  // Delivers no message for this time. Delays may overlap: delivery waits for the last to end.
  void DelayMessages(PollLoop::Clock::duration delay);

  void Event_Connected() override;
  void Event_DataAvailable() override { ProcessData(); }
  void Event_Error() override;
  bool HoldsInput() const override { return !mEvents.IsEmpty(); }

 private:
  void ProcessData();
  // Returns whether a wait is in progress, which takes or drops the message.
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

  ByteQueue& mDataBuffer = Input();  // the beginning of a message
  ByteQueue mEvents;                 // whole messages, not delivered yet
  std::string mCommandResponse;
  std::int32_t mWaitForThisCommand = -1;
  bool mWaitingForACommand = false;
  std::size_t myMaxMessageBytes = std::numeric_limits<std::size_t>::max();
  MessageBudget myBudget;
  bool myIsDispatching = false;
  bool myIsHeld = false;
  int myDelays = 0;  // still running
  std::chrono::seconds myGonePatience{2};
  // After the peer ended its sending: when it last took bytes, and how many it had taken then.
  std::optional<PollLoop::Clock::time_point> myEndSeen;
  std::size_t mySentBefore = 0;
  bool myIsQueued = false;  // on the loop's list
};

}  // namespace corvane
