#include "net/easy_tcp_socket.h"

#include <chrono>
#include <memory>
#include <new>
#include <utility>

#include "framework/exceptions.h"
#include "net/poll_loop.h"

namespace corvane {
namespace {

constexpr std::chrono::milliseconds kFullDelay(50);

}  // namespace

EasyTCPSocket::EasyTCPSocket(PollLoop& loop) : TCPSocket(loop), mEvents(loop.Memory().input) {
  SkipSendEvents();
}

void EasyTCPSocket::SendMessage(std::int32_t command, std::string_view data) {
  if (IsConnected()) TCPSocket::Write(CreatePacket(command, data));
}

void EasyTCPSocket::SendMessage(std::int32_t command, std::span<const SharedBytes> payload) {
  std::size_t bytes = 0;
  for (const SharedBytes& slice : payload)
    bytes += slice.Size();
  TCPSocket::Write(CreateHeader(command, bytes));
  for (const SharedBytes& slice : payload)
    TCPSocket::Write(slice);
}

std::string EasyTCPSocket::Read(std::size_t /*count*/) {
  throw RuntimeException("You cannot call Read on an EasyTCPSocket directly.");
}

std::string EasyTCPSocket::ReadAll() {
  throw RuntimeException("You cannot call ReadAll on an EasyTCPSocket directly.");
}

void EasyTCPSocket::Write(std::string_view /*bytes*/) {
  throw RuntimeException("You cannot call Write on an EasyTCPSocket directly.");
}

void EasyTCPSocket::Close() {
  StopDispatching();
  TCPSocket::Close();
}

void EasyTCPSocket::Event_Connected() {
  myIsDispatching = true;
  RequestDispatch();
  Connected();
}

void EasyTCPSocket::Event_Error() {
  StopDispatching();
  Error(LastErrorCode());
}

void EasyTCPSocket::ProcessData() {
  std::size_t whole = 0;  // bytes of the messages to queue
  for (;;) {
    const Frame frame = ReadFrame(mDataBuffer.Bytes().substr(whole), myMaxMessageBytes);
    if (frame.state == Frame::State::Malformed) return Close();
    if (frame.state == Frame::State::Incomplete) break;
    if (AnswerWait(frame)) {
      mDataBuffer.Consume(frame.length);  // `whole` is 0: a wait does not begin in this loop
    } else {
      whole += frame.length;
    }
  }
  if (whole != 0) AddEvents(whole);
}

bool EasyTCPSocket::AnswerWait(const Frame& frame) {
  if (!mWaitingForACommand) return false;
  if (WaitingForThisMessage(frame.command)) {
    mWaitingForACommand = false;
    mCommandResponse = frame.payload;
  }
  return true;
}

bool EasyTCPSocket::WaitingForThisMessage(std::int32_t command) const {
  return mWaitingForACommand && command == mWaitForThisCommand;
}

void EasyTCPSocket::AddEvents(std::size_t bytes) {
  bool hasRoom = true;
  if (mEvents.IsEmpty()) {
    // The buffer becomes the queue; the beginning of a message, usually nothing, is copied back.
    std::swap(mEvents, mDataBuffer);
    hasRoom = mDataBuffer.Append(mEvents.Bytes().substr(bytes));
    mEvents.Truncate(bytes);
  } else {
    hasRoom = mEvents.Append(mDataBuffer.Bytes().substr(0, bytes));
    mDataBuffer.Consume(bytes);
  }
  if (!hasRoom) return FailForMemory();
  RequestDispatch();
}

void EasyTCPSocket::RequestDispatch() {
  if (myIsQueued || !HasQueued()) return;
  myIsQueued = true;
  myLoop.RequestDispatch(std::static_pointer_cast<EasyTCPSocket>(shared_from_this()));
}

void EasyTCPSocket::HoldMessages(bool held) {
  myIsHeld = held;
  RequestDispatch();
}

void EasyTCPSocket::DelayMessages(PollLoop::Clock::duration delay) {
  ++myDelays;
  myLoop.CallLater(delay, weak_from_this(), [this] { EndDelay(); });
}

void EasyTCPSocket::EndDelay() {
  --myDelays;
  if (mEvents.IsEmpty() || !HasHungUp()) return RequestDispatch();
  // The peer may have ended its sending only. If it is gone, it takes no bytes, and its delayed
  // messages must not keep the server busy for minutes.
  const auto now = PollLoop::Clock::now();
  const bool tookBytes = std::exchange(mySentBefore, SentSinceProgress()) != SentSinceProgress();
  if (!myEndSeen || tookBytes) myEndSeen = now;
  if (now - *myEndSeen < myGonePatience) return RequestDispatch();
  mEvents.Clear();
  EndByPeer();
}

bool EasyTCPSocket::_Poll() {
  if (!IsDue()) return false;
  const ScopedFlag handler = BeginHandler();
  try {
    FireEvents();
  } catch (const std::bad_alloc&) {
    RunOutOfMemory();
  }
  return true;
}

void EasyTCPSocket::FireEvents() {
  // A peer that does not read its answers gets no more of them.
  if (IsFull()) return DelayMessages(kFullDelay);
  constexpr auto kNone = PollLoop::Clock::duration::zero();
  const Frame frame = ReadFrame(mEvents.Bytes());
  auto wait = myBudget.Wait();
  if (wait <= kNone) wait = MustWait(frame.command);
  if (wait > kNone) return DelayMessages(wait);
  myBudget.ChargeMessage();
  ++myLoop.Counts().messages;
  // The payload stays in place, in a queue that the handler cannot reach.
  ByteQueue delivering = std::move(mEvents);
  ReceivedMessage(frame.command, frame.payload);
  if (!myIsDispatching) return;
  delivering.Consume(frame.length);
  if (!delivering.TakeAll(mEvents)) return FailForMemory();
  mEvents = std::move(delivering);
  if (mEvents.IsEmpty()) ResumeInput();
}

void EasyTCPSocket::StopDispatching() {
  myIsDispatching = false;
  myIsHeld = false;
  myEndSeen.reset();
  Purge();
}

void EasyTCPSocket::Purge() {
  TCPSocket::Purge();
  mEvents.Clear();
}

std::string EasyTCPSocket::WaitForMessage(std::int32_t command, std::int32_t timeoutSeconds) {
  if (!IsConnected() || timeoutSeconds <= 0) return {};
  mWaitForThisCommand = command;
  mCommandResponse.clear();
  mWaitingForACommand = true;
  const auto over = [this] {
    Poll();
    return !mWaitingForACommand || !IsConnected() || LastErrorCode() != 0;
  };
  myLoop.WaitUntil(over, PollLoop::Clock::now() + std::chrono::seconds(timeoutSeconds));
  mWaitingForACommand = false;
  return std::exchange(mCommandResponse, {});
}

bool EasyTCPSocket::WaitForConnection(std::int32_t timeoutSeconds) {
  const auto over = [this] {
    if (!IsConnected()) Poll();
    return IsConnected() || LastErrorCode() != 0;
  };
  myLoop.WaitUntil(over, PollLoop::Clock::now() + std::chrono::seconds(timeoutSeconds));
  return IsConnected();
}

}  // namespace corvane
