#include "net/proxy_header_reader.h"

#include <algorithm>
#include <span>

#include "net/poll_loop.h"
#include "net/proxy_header.h"

namespace corvane {

bool ProxyHeaderReader::Begin(const os::Accepted& accepted, std::chrono::milliseconds patience) {
  myProxy = accepted.peer;
  if (Attach(accepted.handle) != 0) return false;
  myLoop.CallLater(patience, shared_from_this(), [this] { GiveUp(); });
  return true;
}

void ProxyHeaderReader::GiveUp() {
  myIsReadable = true;
  Advance();
  Refuse();
}

void ProxyHeaderReader::Advance() {
  while (myIsReadable && Handle() != os::kNoSocket)
    myLeft == 0 ? Read() : Skip();
}

void ProxyHeaderReader::Read() {
  const std::size_t before = myBytes.size();
  const std::span<char> space = myLoop.Scratch().first(kMaxProxyHeaderRead - before);
  const os::Transfer peeked = os::Peek(Handle(), space);
  if (peeked.bytes == 0) return EndOrWait(peeked);
  myBytes.append(space.data(), peeked.bytes);
  const ProxyHeader header = ReadProxyHeader(myBytes);
  switch (header.state) {
    case ProxyHeader::State::Malformed:
      return Refuse();
    case ProxyHeader::State::Incomplete:
      os::Receive(Handle(), space.first(peeked.bytes));
      return;
    case ProxyHeader::State::Known:
      myClient = header.source.value_or(myProxy);
      myLeft = header.length - before;
  }
}

void ProxyHeaderReader::Skip() {
  const std::span<char> space = myLoop.Scratch();
  const os::Transfer skipped = os::Receive(Handle(), space.first(std::min(myLeft, space.size())));
  if (skipped.bytes == 0) return EndOrWait(skipped);
  myLeft -= skipped.bytes;
  if (myLeft == 0) Ended(*this, {ReleaseDescriptor(), myClient, 0});
}

void ProxyHeaderReader::EndOrWait(const os::Transfer& nothing) {
  if (!os::WouldBlock(nothing.error)) return Refuse();
  myIsReadable = false;
}

void ProxyHeaderReader::Refuse() {
  if (Handle() == os::kNoSocket) return;
  CloseDescriptor();
  Ended(*this, {os::kNoSocket, myProxy, 0});
}

}  // namespace corvane
