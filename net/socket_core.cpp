#include "net/socket_core.h"

#include "net/poll_loop.h"

namespace corvane {

SocketCore::~SocketCore() {
  CloseDescriptor();
}

void SocketCore::EventPass() {
  const ScopedFlag handler = BeginHandler();
  {
    const ScopedFlag inPass(myIsInPass);
    Advance();
    if (Take(kConnected)) RaiseConnected();
    if (Take(kDataAvailable)) RaiseDataAvailable();
    if (Take(kSendComplete)) RaiseSendComplete();
    if (IsPending(kFill)) FillStep();
    if (Take(kSendProgress)) RaiseSendProgress();
    if (Take(kError)) RaiseError();
  }
  if (myPending != 0) myLoop.RequestPass(*this);
}

void SocketCore::SetPending(Event event) {
  myPending |= event;
  // What becomes pending in the pass is mostly raised in it as well.
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

void SocketCore::CloseDescriptor() {
  if (myHandle == os::kNoSocket) return;
  StopWatching();
  os::CloseSocket(myHandle);
  myHandle = os::kNoSocket;
}

void SocketCore::StopWatching() {
  myLoop.Unwatch(*this);
}

void SocketCore::NoteReady(const Poller::Ready& ready) {
  myIsReadable = myIsReadable || ready.readable;
  myIsWritable = myIsWritable || ready.writable;
  myIsHungUp = myIsHungUp || ready.hungUp;
}

}  // namespace corvane
