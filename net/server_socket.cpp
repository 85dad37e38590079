#include "net/server_socket.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <utility>

#include <QScopedValueRollback>

#include "net/descriptor_limit.h"
#include "net/poll_loop.h"
#include "net/proxy_header_reader.h"
#include "net/tcp_socket.h"

namespace corvane {
namespace {

// The accept backlog, however few idle objects are kept. The system acknowledges connections above
// it and then forgets them, and their clients wait for a greeting for ever.
constexpr std::int32_t kMinBacklog = 4096;
constexpr std::int32_t kMaxBacklog = 8192;
constexpr std::int64_t kBatch = 10;
// Accepting is quick and greeting is not, so many connections are accepted before they are greeted:
// a client that finds the backlog full tries again only a second later.
constexpr int kMaxAcceptsPerPass = 512;
constexpr std::size_t kMaxArrived = 16'384;
constexpr std::size_t kMaxProxied = 1024;
constexpr std::chrono::milliseconds kMaxHandOffTime(2);  // in one pass
constexpr std::chrono::seconds kPause(1);

}  // namespace

ServerSocket::ServerSocket(PollLoop& loop, std::int32_t minimumSocketsAvailable,
                           std::int32_t maximumSocketsConnected)
    : SocketCore(loop),
      myMinimum(std::max(minimumSocketsAvailable, 1)),
      myMaximum(std::max(maximumSocketsConnected, 1)),
      myPool(myMinimum, myMaximum) {}

ServerSocket::~ServerSocket() {
  CloseProxied();
  // Active connections stay connected, and find no listener when they end.
  for (const std::shared_ptr<TCPSocket>& socket : *myPool.ActiveSockets())
    socket->KeepAlive();
}

std::int32_t ServerSocket::Port() const {
  return IsListening() ? os::LocalEndpoint(Handle()).port : myPort;
}

void ServerSocket::SetMaximumSocketsConnected(std::int32_t value) {
  myMaximum = value;
  if (Handle() != os::kNoSocket) SetPending(kFill);
}

void ServerSocket::Listen() {
  Close();
  SetPending(kFill);
  const int backlog = std::clamp(myMinimum, kMinBacklog, kMaxBacklog);
  const int error = OpenToListen(NetworkInterface, myPort, backlog);
  if (error != 0) return Fail(error);
  myIsListening = true;
}

void ServerSocket::StopListening() {
  myIsListening = false;
}

void ServerSocket::Close() {
  const auto active = myPool.ActiveSockets();
  for (const std::shared_ptr<TCPSocket>& socket : *active) {
    socket->myListener.reset();
    socket->KeepAlive();
    LetGo(socket);
  }
  const SocketPool::Sockets idle = myPool.TakeIdle();
  std::for_each(idle.rbegin(), idle.rend(),
                [](const std::shared_ptr<TCPSocket>& socket) { socket->Close(); });
  CloseProxied();
  for (const os::Accepted& arrived : std::exchange(myArrived, {}))
    os::CloseSocket(arrived.handle);
  CloseDescriptor();
  myPool = SocketPool(myMinimum, myMaximum);
  ClearPending(kFill);
  myIsListening = false;
  myIsStarved = false;
  myIsPaused = false;
  myIsExhausted = false;
}

void ServerSocket::Fail(int error) {
  myLastErrorCode = error;
  myIsListening = false;
  myLoop.Unwatch(*this);
  Event_Error(error);
}

void ServerSocket::FillStep() {
  if (myIsFilling) return;
  const QScopedValueRollback filling(myIsFilling, true);
  if (!myPool.isFilled) {
    AddSockets(myPool.Minimum() + kBatch);
    myPool.isFilled = true;
  } else {
    // A batch that added nothing ends the fill; the next accepted connection tries again.
    while (myPool.IsBelowMinimum() && AddSockets(kBatch)) {
    }
  }
  myIsStarved = myPool.IsBelowMinimum();
  ClearPending(kFill);
}

bool ServerSocket::AddSockets(std::int64_t count) {
  bool hasAdded = false;
  for (std::int64_t i = 0; i < count; ++i) {
    std::shared_ptr<TCPSocket> socket = Event_AddSocket();
    if (socket == nullptr) continue;
    assert(socket->Handle() == os::kNoSocket);
    myPool.AddIdle(std::move(socket));
    hasAdded = true;
  }
  return hasAdded;
}

void ServerSocket::Advance() {
  Accept();
  // A greeting may take long: the database may be locked.
  const auto end = PollLoop::Clock::now() + kMaxHandOffTime;
  while (IsListening() && !myArrived.empty()) {
    // The pool is filled between hand-offs, or a rush would empty it.
    if (IsPending(kFill) || myIsStarved) FillStep();
    const os::Accepted next = myArrived.front();
    myArrived.pop_front();
    HandOff(next);
    if (PollLoop::Clock::now() >= end) break;
  }
  if (MayAccept() || (IsListening() && !myArrived.empty())) myLoop.RequestPass(*this);
}

void ServerSocket::Accept() {
  for (int i = 0; i < kMaxAcceptsPerPass && MayAccept(); ++i)
    AcceptOne();
}

bool ServerSocket::MayAccept() const {
  return myIsReadable && IsListening() && !myIsPaused && myArrived.size() < kMaxArrived;
}

void ServerSocket::AcceptOne() {
  while (!HasSpareDescriptors(myHighestAccepted)) {
    if (myProxied.empty()) return PauseAccepting(os::kOutOfDescriptors);
    GiveUpOldestProxied();
  }
  const os::Accepted accepted = os::Accept(Handle());
  if (accepted.error == 0) {
    myIsExhausted = false;
    myHighestAccepted = std::max(myHighestAccepted, accepted.handle);
    ProxyAddresses.Contains(accepted.peer.address) ? AwaitHeader(accepted) : Admit(accepted);
  } else if (os::WouldBlock(accepted.error)) {
    myIsReadable = false;
  } else if (os::IsOutOfDescriptors(accepted.error)) {
    myProxied.empty() ? PauseAccepting(accepted.error) : GiveUpOldestProxied();
  } else if (!os::IsPassingAcceptError(accepted.error) && myArrived.empty()) {
    Fail(accepted.error);
  }
}

void ServerSocket::Admit(const os::Accepted& accepted) {
  if (!Event_Accepted(accepted.peer)) return os::CloseSocket(accepted.handle);
  myArrived.push_back(accepted);
}

void ServerSocket::AwaitHeader(const os::Accepted& accepted) {
  if (myProxied.size() >= kMaxProxied) GiveUpOldestProxied();
  const auto reader = std::make_shared<ProxyHeaderReader>(myLoop);
  reader->Ended = [this](ProxyHeaderReader& ended, const os::Accepted& from) {
    std::erase_if(myProxied, [&](const auto& proxied) { return proxied.get() == &ended; });
    if (from.handle == os::kNoSocket) return Event_HeaderMissing(from.peer);
    Admit(from);
    myLoop.RequestPass(*this);
  };
  if (reader->Begin(accepted, HeaderPatience)) myProxied.push_back(reader);
}

void ServerSocket::GiveUpOldestProxied() {
  const std::shared_ptr<ProxyHeaderReader> oldest = std::move(myProxied.front());
  myProxied.pop_front();
  oldest->GiveUp();
}

void ServerSocket::CloseProxied() {
  for (const std::shared_ptr<ProxyHeaderReader>& proxied : std::exchange(myProxied, {}))
    proxied->Close();
}

void ServerSocket::HandOff(const os::Accepted& accepted) {
  if (!myPool.CanHandOff() || !Event_Accepted(accepted.peer)) {
    return os::CloseSocket(accepted.handle);
  }
  const std::shared_ptr<TCPSocket> socket = myPool.HandOff();
  socket->myListener = std::static_pointer_cast<ServerSocket>(shared_from_this());
  socket->myHandOffNumber = ++myLastHandOff;
  Event_HandedOff(socket);
  SetPending(kFill);
  if (!socket->TakeOver(accepted)) return socket->Close();
  socket->EventPass();
}

void ServerSocket::RunOutOfMemory() {
  ClearPending(kFill);
  myIsStarved = true;
  PauseAccepting(os::kNoBuffers);
}

void ServerSocket::PauseAccepting(int error) {
  myIsPaused = true;
  myLoop.CallLater(kPause, shared_from_this(), [this] {
    myIsPaused = false;
    myLoop.RequestPass(*this);
  });
  if (std::exchange(myIsExhausted, true)) return;
  myLastErrorCode = error;
  Event_Error(error);
}

void ServerSocket::GiveBack(const std::shared_ptr<TCPSocket>& socket) {
  myPool.GiveBack(*socket);
  SetPending(kFill);
  LetGo(socket);
}

void ServerSocket::LetGo(const std::shared_ptr<TCPSocket>& socket) {
  Event_GivenBack(socket);
  socket->myHandOffNumber = 0;
}

}  // namespace corvane
