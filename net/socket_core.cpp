#include "net/socket_core.h"

#include <limits>
#include <new>
#include <string>
#include <utility>

#include "net/poll_loop.h"

namespace corvane {

SocketCore::~SocketCore() {
  CloseDescriptor();
}

void SocketCore::EventPass() {
  const ScopedFlag handler = BeginHandler();
  try {
    const ScopedFlag inPass(myIsInPass, true);
    Advance();
    if (Take(kConnected)) Event_Connected();
    if (Take(kDataAvailable)) Event_DataAvailable();
    if (Take(kSendComplete)) Event_SendComplete();
    if (IsPending(kFill)) FillStep();
    if (Take(kSendProgress)) RaiseSendProgress();
    if (Take(kError)) RaiseError();
  } catch (const std::bad_alloc&) {
    RunOutOfMemory();
  }
  if (myPending != 0) myLoop.RequestPass(*this);
}

void SocketCore::SetPending(Event event) {
  myPending |= event;
  // Events that become pending inside a pass are usually raised in it.
  if (!myIsInPass) myLoop.RequestPass(*this);
}

bool SocketCore::Take(Event event) {
  if (!IsPending(event)) return false;
  ClearPending(event);
  return true;
}

int SocketCore::Attach(os::SocketHandle handle) {
  myHandle = handle;
  myIsReadable = false;
  myIsWritable = false;
  myIsHungUp = false;
  return myLoop.Watch(*this);
}

int SocketCore::Open(std::int32_t port) {
  if (port < 0 || port > std::numeric_limits<std::uint16_t>::max()) return os::kInvalidArgument;
  const os::Opened opened = os::OpenSocket();
  return opened.error != 0 ? opened.error : Attach(opened.handle);
}

int SocketCore::OpenToListen(const std::optional<NetworkInterface>& local, std::int32_t port,
                             int backlog) {
  const std::string address = local ? local->IPAddress : std::string();
  int error = Open(port);
  if (error == 0) error = os::UseAddressExclusively(myHandle);
  if (error == 0) error = os::Bind(myHandle, {address, static_cast<std::uint16_t>(port)});
  if (error == 0) error = os::Listen(myHandle, backlog);
  return error;
}

os::SocketHandle SocketCore::ReleaseDescriptor() {
  myLoop.Unwatch(*this);
  return std::exchange(myHandle, os::kNoSocket);
}

void SocketCore::CloseDescriptor() {
  if (myHandle != os::kNoSocket) os::CloseSocket(ReleaseDescriptor());
}

void SocketCore::KeepAlive() {
  if (myToken != 0) myKeep = shared_from_this();
}

void SocketCore::NoteReady(const Poller::Ready& ready) {
  myIsReadable = myIsReadable || ready.readable;
  myIsWritable = myIsWritable || ready.writable;
  myIsHungUp = myIsHungUp || ready.hungUp;
}

}  // namespace corvane
