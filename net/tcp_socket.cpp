#include "net/tcp_socket.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include "net/poll_loop.h"
#include "net/server_socket.h"

namespace corvane {
namespace {

// Output above this is sent while it is written, so that a long relay does not pile up memory.
constexpr std::size_t kFlushAt = 64 * 1024;
constexpr int kMostLastReads = 16;

bool IsPort(std::int32_t port) {
  return port >= 0 && port <= std::numeric_limits<std::uint16_t>::max();
}

}  // namespace

TCPSocket::TCPSocket(PollLoop& loop)
    : SocketCore(loop),
      myFlushHalf(static_cast<std::uint8_t>(loop.Flushes().NextHalf())),
      myInput(loop.Buffers()),
      myOutput(loop.Buffers()) {}

TCPSocket::~TCPSocket() {
  EndConnection();
}

void TCPSocket::Connect() {
  Open(State::Connecting);
}

void TCPSocket::Listen() {
  Open(State::Listening);
}

void TCPSocket::Open(State state) {
  Close();
  ForgetLastConnection();
  if (!IsPort(Port)) return Fail(os::InvalidArgumentError());
  const os::Opened opened = os::OpenSocket();
  if (opened.error != 0) return Fail(opened.error);
  int error = Attach(opened.handle);
  const auto port = static_cast<std::uint16_t>(Port);
  const std::string local = LocalInterface ? LocalInterface->IPAddress : std::string();
  if (error == 0 && state == State::Listening) {
    error = os::UseAddressExclusively(Handle());
    if (error == 0) error = os::Bind(Handle(), {local, port});
    if (error == 0) error = os::Listen(Handle(), 1);
  } else if (error == 0) {
    myPeer = {Address, port};
    if (LocalInterface) error = os::Bind(Handle(), {local, 0});
    if (error == 0) error = os::Connect(Handle(), myPeer);
  }
  myState = state;
  if (error != 0) Fail(error);
}

bool TCPSocket::TakeOver(const os::Accepted& accepted) {
  if (Attach(accepted.handle) != 0) {
    CloseDescriptor();
    return false;
  }
  myPeer = accepted.peer;
  ForgetLastConnection();
  BecomeConnected();
  return true;
}

void TCPSocket::BecomeConnected() {
  myState = State::Connected;
  SetPending(kConnected);
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
  if (!TakeOver(accepted)) Fail(os::NoBufferError());
}

void TCPSocket::FinishConnecting() {
  const int error = os::PendingError(Handle());
  if (error != 0) return Fail(error);
  BecomeConnected();
}

void TCPSocket::Advance() {
  if (myState == State::Connecting && myIsWritable) FinishConnecting();
  if (myState == State::Listening && myIsReadable) AcceptPeer();
  if (myState != State::Connected) return;
  if (myAwaitsWritable && myIsWritable) {
    myAwaitsWritable = false;
    FlushOutput();
  }
  if (myIsReadable && !HoldsInput()) Receive();
}

void TCPSocket::Receive() {
  const std::span<char> scratch = myLoop.Scratch();
  const os::Transfer received = os::Receive(Handle(), scratch);
  if (os::WouldBlock(received.error)) {
    myIsReadable = false;
    myIsHungUp = false;
    // Nothing more will come from a peer that our bytes do not reach any more.
    if (mySendError != 0) Fail(mySendError);
    return;
  }
  if (received.error != 0) return Fail(received.error);
  if (received.bytes == 0) {
    // A peer that only ended its sending still reads.
    myLoop.HandOver();
    if (myState != State::Connected) return;
    FlushOutput();
    return Fail(os::ConnectionResetError());
  }
  if (!myInput.Append({scratch.data(), received.bytes})) return FailForMemory();
  // A short read has drained the socket, but for the end of the connection that may follow.
  myIsReadable = myIsHungUp || mySendError != 0 || received.bytes == scratch.size();
  SetPending(kDataAvailable);
  ResumeInput();
}

void TCPSocket::Poll() {
  if (myState == State::Connected) {
    const HandlerGuard guard(*this);
    Receive();
    if (IsPending(kDataAvailable)) {
      ClearPending(kDataAvailable);
      RaiseDataAvailable();
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
  DropOutput();
  SetPending(kError);
}

void TCPSocket::FailForMemory() {
  Fail(os::NoBufferError());
}

void TCPSocket::RaiseError() {
  Event_Error();
  // Unless the handler used the socket anew, be it in vain.
  if (myState == State::Failed && !IsPending(kError)) Close();
}

void TCPSocket::Close() {
  // The last reference may be the listener's, or the loop's.
  const std::shared_ptr<SocketCore> keep = weak_from_this().lock();
  if (myState == State::Connected) {
    FlushFinally();
    os::EndSending(Handle());
    // Closing with bytes unread would reset the connection and may lose what was just sent.
    for (int i = 0; i < kMostLastReads; ++i) {
      if (os::Receive(Handle(), myLoop.Scratch()).bytes == 0) break;
    }
  }
  EndConnection();
  if (const std::shared_ptr<ServerSocket> listener = std::exchange(myListener, {}).lock()) {
    listener->GiveBack(std::static_pointer_cast<TCPSocket>(keep));
  }
}

void TCPSocket::ForgetLastConnection() {
  myLastErrorCode = 0;
  myInput.Clear();
  mySentSinceProgress = 0;
}

void TCPSocket::EndConnection() {
  myState = State::Closed;
  DropOutput();
  mySendError = 0;
  myAwaitsWritable = false;
  ClearPending(kConnected | kDataAvailable | kSendComplete | kSendProgress | kError);
  CloseDescriptor();
}

std::uint16_t TCPSocket::LocalPort() const {
  return Handle() == os::kNoSocket ? std::uint16_t{0} : os::LocalEndpoint(Handle()).port;
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

void TCPSocket::Write(std::string_view bytes) {
  WriteBytes(bytes);
}

void TCPSocket::WriteBytes(std::string_view bytes) {
  if (myState != State::Connected || mySendError != 0 || bytes.empty()) return;
  const std::size_t before = myOutput.Size();
  const std::size_t after = before + bytes.size();
  if (after > myLoop.Limits().connection) return FailForMemory();
  if (!myOutput.Append(bytes)) return FailForMemory();
  if (!myAwaitsFlush && !myAwaitsWritable) {
    myAwaitsFlush = true;
    myLoop.RequestFlush(std::static_pointer_cast<TCPSocket>(shared_from_this()));
  }
  myLoop.CountOutput(before, after);
  if (after >= kFlushAt) FlushOutput();
}

void TCPSocket::FlushOutput() {
  myAwaitsFlush = false;
  if (myState != State::Connected || myAwaitsWritable || myOutput.IsEmpty()) return;
  const std::size_t before = myOutput.Size();
  const os::Transfer sent = os::Send(Handle(), myOutput.Bytes());
  if (sent.error != 0 && !os::WouldBlock(sent.error)) {
    // The peer's last messages may still wait to be read, so reading finds out how it ended.
    mySendError = sent.error;
    DropOutput();
    myIsReadable = true;
    ResumeInput();
    return;
  }
  myOutput.Consume(sent.bytes);
  myLoop.CountOutput(before, myOutput.Size());
  if (!myOutput.IsEmpty()) {
    myAwaitsWritable = true;
    myIsWritable = false;
  }
  if (!myRaisesSendEvents || sent.bytes == 0) return;
  mySentSinceProgress += sent.bytes;
  SetPending(kSendProgress);
  if (myOutput.IsEmpty()) SetPending(kSendComplete);
}

void TCPSocket::FlushFinally() {
  myAwaitsWritable = false;
  FlushOutput();
}

void TCPSocket::RaiseSendProgress() {
  Event_SendProgress(std::exchange(mySentSinceProgress, 0), myOutput.Size());
}

void TCPSocket::DropOutput() {
  const std::size_t before = myOutput.Size();
  myOutput.Clear();
  myLoop.CountOutput(before, 0);
}

}  // namespace corvane
