#include "server/map_socket.h"

#include <utility>

#include "net/poll_loop.h"
#include "server/client_socket.h"
#include "server/wire.h"

namespace corvane {

MapSocket::MapSocket(PollLoop& loop, DatabaseConnection& serverdb, LocationLookup& locations,
                     Rules rules)
    : NetworkHost(loop, serverdb, locations, std::move(rules)) {
  ProxyAddresses = Context.rules.proxyAddresses;
  Context.addresses.Reported = [this](StatusParts parts) { CallStatusMessage(parts); };
}

MapSocket::~MapSocket() {
  // Sessions borrow their listener and must not outlive it connected.
  for (const auto& connection : *ActiveConnections())
    static_cast<ClientSocket&>(*connection).Abandon();
  for (const std::weak_ptr<ClientSocket>& session : myUnlinked) {
    if (const auto connected = session.lock()) connected->Abandon();
  }
}

bool MapSocket::Event_Accepted(const os::Endpoint& peer) {
  const bool isAdmitted = Context.addresses.Admit(peer.address);
  if (!isAdmitted)
    Context.events.Raise({.kind = ServerEvent::Kind::TooMany, .address = peer.address});
  return isAdmitted;
}

std::shared_ptr<TCPSocket> MapSocket::Event_AddSocket() {
  return std::make_shared<ClientSocket>(myLoop, *this);
}

void MapSocket::Event_Error(std::int32_t code) {
  CallStatusMessage({"Server Error: ", std::to_string(code)});
}

void MapSocket::Event_HeaderMissing(const os::Endpoint& proxy) {
  Context.addresses.NoteMissingHeader(proxy.address);
  Context.events.Raise({.kind = ServerEvent::Kind::HeaderMissing, .address = proxy.address});
}

void MapSocket::Event_HandedOff(const std::shared_ptr<TCPSocket>& socket) {
  Context.roster.Enter(static_cast<ClientSocket&>(*socket));
}

void MapSocket::Event_GivenBack(const std::shared_ptr<TCPSocket>& socket) {
  auto& session = static_cast<ClientSocket&>(*socket);
  Context.roster.Leave(session);
  if (socket->Handle() == os::kNoSocket) return;
  // The listener was closed; the session stays connected.
  std::erase_if(myUnlinked, [](const auto& unlinked) { return unlinked.expired(); });
  myUnlinked.push_back(session.Self());
}

void MapSocket::CallStatusMessage(StatusParts parts) {
  const std::string line = StatusLine(parts);
  StatusMessage(*this, line);
  if (Logged) Logged(HasLongName(parts) ? LogLine(parts) : line);
}

void MapSocket::CallUserLoggedIn(ClientSocket& client) {
  UserLoggedIn(*this, client.Self());
}

void MapSocket::CallUserLoggedOut(ClientSocket& client) {
  UserLoggedOut(*this, client.Self());
}

void MapSocket::BroadcastPosition(ClientSocket& sender) {
  if (sender.myNetwork == nullptr) return;
  const std::string packet = CreatePacket(wire::kMember, wire::PositionRecord(sender));
  if (!myLoop.Memory().MakeRoomForOutput(packet.size())) return sender.FailForMemory();
  Context.roster.Gather(sender.Self(), packet);
}

void MapSocket::ClientDisconnect(ClientSocket& leaving) {
  if (leaving.myNetwork == nullptr) return;
  SendToMembers(*leaving.myNetwork, wire::kMemberLeft, leaving.Username(), &leaving);
}

}  // namespace corvane
