#include "net/tcp_socket.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <span>
#include <utility>

#include "net/poll_loop.h"
#include "net/server_socket.h"

namespace corvane {
namespace {

// Output above this is sent at once, or a long relay would pile up memory.
constexpr std::size_t kFlushAt = 64 * 1024;
constexpr int kMaxLastReads = 16;
constexpr std::size_t kBehindShare = 16;  // of its output limit, from which on a peer is behind

std::size_t TotalSize(std::span<const std::string_view> pieces) {
  std::size_t size = 0;
  for (const std::string_view piece : pieces)
    size += piece.size();
  return size;
}

}  // namespace

TCPSocket::TCPSocket(PollLoop& loop)
    : SocketCore(loop), myInput(loop.Memory().input), myOutput(loop.Memory().output) {}

TCPSocket::~TCPSocket() {
  EndConnection();
}

std::string TCPSocket::PeerName() const {
  const bool isIPv6 = myPeer.address.find(':') != std::string::npos;
  return (isIPv6 ? '[' + myPeer.address + ']' : myPeer.address) + ':' + std::to_string(myPeer.port);
}

void TCPSocket::Connect() {
  Begin(State::Connecting);
}

void TCPSocket::Listen() {
  Begin(State::Listening);
}

void TCPSocket::Begin(State state) {
  Close();
  EndConnection();
  ForgetLastConnection();
  const int error =
      state == State::Listening ? OpenToListen(LocalInterface, Port, 1) : OpenToConnect();
  myState = state;
  if (error != 0) Fail(error);
}

int TCPSocket::OpenToConnect() {
  int error = Open(Port);
  if (error != 0) return error;
  myPeer = {Address, static_cast<std::uint16_t>(Port)};
  if (LocalInterface) error = os::Bind(Handle(), {LocalInterface->IPAddress, 0});
  return error != 0 ? error : os::Connect(Handle(), myPeer);
}

bool TCPSocket::TakeOver(const os::Accepted& accepted) {
  if (Attach(accepted.handle) != 0) {
    CloseDescriptor();
    return false;
  }
  myPeer = accepted.peer;
  ForgetLastConnection();
  myState = State::Connected;
  SetPending(kConnected);
  return true;
}

void TCPSocket::AcceptPeer() {
  const os::Accepted accepted = os::Accept(Handle());
  if (os::IsPassingAcceptError(accepted.error)) return myLoop.RequestPass(*this);
  if (os::WouldBlock(accepted.error)) {
    myIsReadable = false;
    return;
  }
  if (accepted.error != 0) return Fail(accepted.error);
  CloseDescriptor();
  if (!TakeOver(accepted)) Fail(os::kNoBuffers);
}

void TCPSocket::FinishConnecting() {
  const int error = os::PendingError(Handle());
  if (error != 0) return Fail(error);
  myState = State::Connected;
  SetPending(kConnected);
}

void TCPSocket::Advance() {
  if (myState == State::Connecting && myIsWritable) FinishConnecting();
  if (myState == State::Listening && myIsReadable) AcceptPeer();
  if (myAwaitsWritable && myIsWritable && MaySend()) {
    myAwaitsWritable = false;
    if (std::exchange(myToleratesFullPeer, false)) os::TolerateFullPeer(Handle(), false);
    Flush();
  }
  if (myState == State::Connected && myIsReadable && !HoldsInput()) Receive();
}

void TCPSocket::Receive() {
  const std::span<char> scratch = myLoop.Scratch();
  const os::Transfer received = os::Receive(Handle(), scratch);
  if (os::WouldBlock(received.error)) {
    myIsReadable = false;
    myIsHungUp = false;
    // Nothing more will come from a peer that our bytes no longer reach.
    if (mySendError != 0) Fail(mySendError);
    return;
  }
  if (received.error != 0) return Fail(received.error);
  if (received.bytes == 0) return EndByPeer();
  if (!myInput.Append({scratch.data(), received.bytes})) return FailForMemory();
  myLoop.Counts().received += received.bytes;
  // A short read has emptied the socket, but the end of the connection may follow.
  myIsReadable = myIsHungUp || mySendError != 0 || received.bytes == scratch.size();
  SetPending(kDataAvailable);
  ResumeInput();
  myLoop.Memory().BoundInput();
}

void TCPSocket::EndByPeer() {
  // The peer may still read.
  myLoop.RunBeforeFlush();
  if (myState != State::Connected) return;
  myLastErrorCode = os::kConnectionReset;
  myState = State::Ended;
  SetPending(kError);
}

void TCPSocket::Poll() {
  if (myState == State::Connected) {
    const ScopedFlag handler = BeginHandler();
    Receive();
    if (IsPending(kDataAvailable)) {
      ClearPending(kDataAvailable);
      Event_DataAvailable();
    }
  } else if (IsBusy()) {
    Advance();
  } else {
    EventPass();
  }
}

void TCPSocket::ResumeInput() {
  if (myState == State::Connected && myIsReadable) myLoop.RequestPass(*this);
}

void TCPSocket::Fail(int error) {
  myLastErrorCode = error;
  myState = State::Failed;
  myOutput.Clear();
  SetPending(kError);
}

void TCPSocket::FailForMemory() {
  Purge();
  if (myState == State::Draining) return EndConnection();
  Fail(os::kNoBuffers);
}

void TCPSocket::RaiseError() {
  Event_Error();
  // The handler may have started another connection, even one that has failed.
  const bool isOver = myState == State::Ended || myState == State::Failed;
  if (isOver && !IsPending(kError)) Close();
}

void TCPSocket::RunOutOfMemory() {
  if (myState == State::Ended || myState == State::Failed) return Close();
  if (myState != State::Closed) FailForMemory();
}

void TCPSocket::Close() {
  // The last reference may be the listener's, or the loop's.
  const std::shared_ptr<SocketCore> keep = weak_from_this().lock();
  if (myState == State::Connected) myLoop.RunBeforeFlush();
  const bool wasOpen = myState == State::Connected || myState == State::Ended;
  if (wasOpen) FlushFinally();
  if (wasOpen && !myOutput.IsEmpty() && keep != nullptr) {
    Drain();
  } else if (wasOpen) {
    Finish();
  } else {
    EndConnection();
  }
  if (const std::shared_ptr<ServerSocket> listener = std::exchange(myListener, {}).lock()) {
    listener->GiveBack(std::static_pointer_cast<TCPSocket>(keep));
  }
}

void TCPSocket::Drain() {
  myState = State::Draining;
  Purge();
  ClearPending(kConnected | kDataAvailable | kSendComplete | kSendProgress | kError);
  KeepAlive();
  CheckDrain(0);
}

void TCPSocket::CheckDrain(std::size_t leftBefore) {
  if (myState != State::Draining) return;
  const std::size_t left = myOutput.Size();
  if (left == leftBefore) return EndConnection();
  myLoop.CallLater(myLoop.Memory().limits.drain, shared_from_this(),
                   [this, left] { CheckDrain(left); });
}

void TCPSocket::Finish() {
  os::EndSending(Handle());
  // Closing with bytes unread would reset the connection, and the peer might lose what was sent.
  for (int i = 0; i < kMaxLastReads; ++i) {
    if (os::Receive(Handle(), myLoop.Scratch()).bytes == 0) break;
  }
  EndConnection();
}

void TCPSocket::ForgetLastConnection() {
  myLastErrorCode = 0;
  myInput.Clear();
  mySentSinceProgress = 0;
}

void TCPSocket::EndConnection() {
  myState = State::Closed;
  myOutput.Clear();
  mySendError = 0;
  myAwaitsWritable = false;
  myToleratesFullPeer = false;
  ClearPending(kConnected | kDataAvailable | kSendComplete | kSendProgress | kError);
  CloseDescriptor();
}

std::string TCPSocket::Read(std::size_t count) {
  std::string bytes(myInput.Bytes().substr(0, count));
  myInput.Consume(bytes.size());
  return bytes;
}

std::string TCPSocket::ReadAll() {
  return TCPSocket::Read(myInput.Size());
}

std::string TCPSocket::Lookahead() const {
  return std::string(myInput.Bytes());
}

void TCPSocket::Purge() {
  myInput.Clear();
}

bool TCPSocket::IsEOF() const {
  return !IsConnected() && myInput.IsEmpty();
}

bool TCPSocket::IsFull() const {
  return myOutput.Size() >= myLoop.Memory().limits.connectionOutput;
}

TCPSocket::Reading TCPSocket::HowPeerReads(PollLoop::Clock::time_point now) const {
  const ConnectionMemory::Limits& limits = myLoop.Memory().limits;
  if (myOutput.Size() < limits.connectionOutput / kBehindShare) return Reading::KeepsUp;
  return now - myLastMoved < limits.drain ? Reading::IsBehind : Reading::IsStuck;
}

bool TCPSocket::MayWrite(std::size_t bytes) {
  if (myState == State::Connected) myLoop.RunBeforeFlush();
  if (myState != State::Connected || mySendError != 0 || bytes == 0) return false;
  if (IsBusy() || myOutput.SizeOfSmall() < myLoop.Memory().limits.connectionOutput) return true;
  FailForMemory();
  return false;
}

void TCPSocket::Write(std::string_view bytes) {
  if (MayWrite(bytes.size())) NoteWritten(myOutput.Append(bytes));
}

void TCPSocket::Write(const SharedBytes& slice) {
  if (MayWrite(slice.Size())) NoteWritten(myOutput.Append(slice));
}

void TCPSocket::NoteWritten(bool hadRoom) {
  if (!hadRoom) return FailForMemory();
  if (!myAwaitsFlush && !myAwaitsWritable) {
    myAwaitsFlush = true;
    myLoop.RequestFlush(std::static_pointer_cast<TCPSocket>(shared_from_this()));
  }
  if (myOutput.Size() >= kFlushAt) Flush();
  myLoop.Memory().BoundOutput();
}

bool TCPSocket::MaySend() const {
  return myState == State::Connected || myState == State::Ended || myState == State::Draining;
}

void TCPSocket::Flush() {
  myAwaitsFlush = false;
  std::array<std::string_view, os::kMaxPieces> room;
  while (MaySend() && !myAwaitsWritable && !myOutput.IsEmpty()) {
    const auto pieces = myOutput.First(room);
    const os::Transfer sent = os::Send(Handle(), pieces);
    if (sent.error != 0 && !os::WouldBlock(sent.error)) return FailToSend(sent.error);
    myAwaitsWritable = sent.bytes < TotalSize(pieces);
    myIsWritable = !myAwaitsWritable;
    if (myAwaitsWritable && sent.bytes > 0) myLastMoved = PollLoop::Clock::now();
    myOutput.Consume(sent.bytes);
    myLoop.Counts().sent += sent.bytes;
    NoteSent(sent.bytes);
  }
  if (myAwaitsWritable) WatchFullPeer();
  if (myState == State::Draining && myOutput.IsEmpty()) Finish();
}

void TCPSocket::WatchFullPeer() {
  if (std::exchange(myIsPeerWatched, true)) return;
  myLoop.CallLater(myLoop.Memory().limits.lookAtFullPeer, weak_from_this(), [this] {
    myIsPeerWatched = false;
    LookAtFullPeer();
  });
}

void TCPSocket::LookAtFullPeer() {
  if (!myAwaitsWritable || myState != State::Connected) return;
  if (os::IsPeerGone(Handle())) return Fail(os::kTimedOut);
  if (!std::exchange(myToleratesFullPeer, true)) os::TolerateFullPeer(Handle(), true);
  WatchFullPeer();
}

void TCPSocket::FailToSend(int error) {
  mySendError = error;
  myOutput.Clear();
  if (myState == State::Draining) return EndConnection();
  // The peer's last messages may still be unread, so reading finds out how the connection ended.
  myIsReadable = true;
  ResumeInput();
}

void TCPSocket::NoteSent(std::size_t count) {
  mySentSinceProgress += count;
  if (!myRaisesSendEvents || count == 0) return;
  SetPending(kSendProgress);
  if (myOutput.IsEmpty()) SetPending(kSendComplete);
}

void TCPSocket::FlushFinally() {
  myAwaitsWritable = false;
  Flush();
}

void TCPSocket::RaiseSendProgress() {
  Event_SendProgress(std::exchange(mySentSinceProgress, 0), myOutput.Size());
}

}  // namespace corvane
