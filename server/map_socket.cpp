#include "server/map_socket.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "framework/exceptions.h"
#include "framework/text.h"
#include "net/poll_loop.h"
#include "server/client_socket.h"
#include "server/wire.h"

namespace corvane {
namespace {

constexpr std::string_view kAllNetworks = "(All Networks)";

std::shared_ptr<ClientSocket> SessionOf(const std::shared_ptr<TCPSocket>& socket) {
  return std::static_pointer_cast<ClientSocket>(socket);
}

std::shared_ptr<ClientSocket> SessionOf(ClientSocket& session) {
  return std::static_pointer_cast<ClientSocket>(session.shared_from_this());
}

}  // namespace

MapSocket::MapSocket(PollLoop& loop, DatabaseConnection& serverdb, LocationLookup& locations,
                     Rules rules)
    : ServerSocket(loop, 2, 10),
      myRules(std::move(rules)),
      myLocations(locations),
      myBans(serverdb),
      myAdmins(serverdb, myRules.statementValues),
      myRoster(loop) {
  myAddresses.Refused = [this](const std::string& address, std::uint64_t count) {
    CallStatusMessage({address, ": Connections Refused (", std::to_string(count), ")"});
  };
  myAddresses.LeftOut = [this](const std::string& address, std::uint64_t count) {
    CallStatusMessage({address, ": Lines Left Out (", std::to_string(count), ")"});
  };
}

MapSocket::~MapSocket() {
  // Sessions borrow their listener, so none goes on without it.
  for (const auto& connection : *ActiveConnections())
    SessionOf(connection)->Abandon();
  for (const std::weak_ptr<ClientSocket>& session : myUnlinked) {
    if (const auto connected = session.lock()) connected->Abandon();
  }
}

bool MapSocket::Event_Accepted(const os::Endpoint& peer) {
  return myAddresses.Admit(peer.address);
}

std::shared_ptr<TCPSocket> MapSocket::Event_AddSocket() {
  return std::make_shared<ClientSocket>(myLoop, *this);
}

void MapSocket::Event_Error(std::int32_t code) {
  CallStatusMessage({"Server Error: ", std::to_string(code)});
}

void MapSocket::Event_HandedOff(const std::shared_ptr<TCPSocket>& socket) {
  myRoster.Enter(*SessionOf(socket));
}

void MapSocket::Event_GivenBack(const std::shared_ptr<TCPSocket>& socket) {
  myRoster.Leave(*SessionOf(socket));
  if (socket->Handle() == os::kNoSocket) return;
  // The listener was closed, the session goes on.
  std::erase_if(myUnlinked, [](const auto& session) { return session.expired(); });
  myUnlinked.push_back(SessionOf(socket));
}

void MapSocket::CallStatusMessage(StatusParts parts) {
  const std::string line = StatusLine(parts);
  StatusMessage(*this, line);
  if (Logged) Logged(HasLongName(parts) ? LogLine(parts) : line);
}

void MapSocket::CallStatusMessageFor(const std::string& address, StatusParts parts) {
  if (myAddresses.AdmitLine(address)) CallStatusMessage(parts);
}

void MapSocket::Note(const std::string& line) const {
  if (Audited) Audited(line);
}

void MapSocket::CallUserLoggedIn(ClientSocket& client) {
  UserLoggedIn(*this, SessionOf(client));
}

void MapSocket::CallUserLoggedOut(ClientSocket& client) {
  UserLoggedOut(*this, SessionOf(client));
}

void MapSocket::BroadcastPosition(ClientSocket& sender) {
  if (sender.myNetwork == nullptr) return;
  const std::string packet = CreatePacket(wire::kMember, wire::PositionRecord(sender));
  if (!myLoop.Memory().MakeRoomForOutput(packet.size())) return sender.FailForMemory();
  myRoster.Gather(SessionOf(sender), packet);
}

Slice MapSocket::MakePacket(std::int32_t command, std::string_view data) const {
  return CopyToBlock(myLoop.Memory().output, CreatePacket(command, data));
}

void MapSocket::BroadcastMessage(const std::string& text, const std::string& networkName) {
  if (text.empty()) return;
  const Slice packet = MakePacket(wire::kMessage, text);
  const bool toAll = networkName == kAllNetworks;
  const std::string foldedName = FoldText(networkName);
  const auto connections = ActiveConnections();
  for (const std::shared_ptr<TCPSocket>& connection : *connections) {
    const std::shared_ptr<ClientSocket> recipient = SessionOf(connection);
    if (recipient->myNetwork == nullptr && myRules.isMessageFatalWithoutNetwork) {
      throw NilObjectException();
    }
    if (recipient->HearsItsNetwork() && (recipient->myNetwork->FoldedName == foldedName || toAll)) {
      recipient->SendPackets(packet);
    }
    myLoop.GiveWay();
  }
}

void MapSocket::ClientDisconnect(ClientSocket& leaving) {
  if (leaving.myNetwork == nullptr) return;
  const Slice packet = MakePacket(wire::kMemberLeft, leaving.Username());
  const auto members = myRoster.MembersOf(*leaving.myNetwork);
  for (const std::shared_ptr<ClientSocket>& recipient : *members) {
    if (recipient.get() != &leaving) recipient->SendPackets(packet);
    myLoop.GiveWay();
  }
}

NetworkRef MapSocket::FindNetwork(std::string_view name) const {
  // Folded once, and only where it may be a network's name: anybody may ask for anything.
  std::optional<std::string> folded;
  for (const NetworkRef& network : Networks) {
    if (!MayFoldTo(name.size(), network->FoldedName.size())) continue;
    if (!folded) folded = FoldText(name);
    if (network->FoldedName == *folded) return network;
  }
  return nullptr;
}

void MapSocket::RemoveNetwork(const NetworkRef& entry) {
  if (std::find(Networks.begin(), Networks.end(), entry) == Networks.end()) return;
  BroadcastMessage("This network has been removed from the server.", entry->NetworkName);
  DisconnectAllClientsOnNetwork(entry);
  // Looked up anew: the walks give way to other events.
  const auto place = std::find(Networks.begin(), Networks.end(), entry);
  if (place != Networks.end()) Networks.erase(place);
}

void MapSocket::DisconnectAllClientsOnNetwork(const NetworkRef& entry) {
  const Slice packet = MakePacket(wire::kBye, wire::kByeText);
  const auto members = myRoster.MembersOf(*entry);
  for (const std::shared_ptr<ClientSocket>& member : *members) {
    member->SendPackets(packet);
    myLoop.GiveWay();
  }
}

std::string MapSocket::ForEachUser(const std::string& userName, const std::string& networkName,
                                   const std::function<void(ClientSocket&)>& act) {
  const std::string foldedName = FoldText(userName);
  const std::string foldedNetwork = FoldText(networkName);
  std::string lastExamined;
  const auto connections = ActiveConnections();
  for (const std::shared_ptr<TCPSocket>& connection : *connections) {
    const std::shared_ptr<ClientSocket> session = SessionOf(connection);
    lastExamined = session->Username();
    const bool isThere = session->myNetwork && session->myNetwork->FoldedName == foldedNetwork;
    if (isThere && session->FoldedUsername() == foldedName) act(*session);
    myLoop.GiveWay();
  }
  return lastExamined;
}

void MapSocket::Kick(ClientSocket& target, const std::string& reason) {
  target.SendNotice(wire::kKick, reason);
  TellKick(target.Username(), reason);
}

void MapSocket::KickUser(const std::string& userName, const std::string& networkName,
                         const std::string& reason) {
  const auto notify = [&reason](ClientSocket& user) { user.SendNotice(wire::kKick, reason); };
  TellKick(ForEachUser(userName, networkName, notify), reason);
}

void MapSocket::TellKick(std::string_view userName, const std::string& reason) {
  CallStatusMessage({Quoted(userName), " Kicked: ", reason});
}

bool MapSocket::Ban(const std::string& address, const std::string& by, std::string_view givenReason,
                    const std::string& networkName, ClientSocket* target) {
  const std::string reason(Beginning(givenReason, myRules.longestReason));
  // First, since what is sent may leave at once: nobody hears of a ban that is not stored.
  const bool isStored = myBans.Add(address, by, reason, networkName);
  if (target != nullptr) target->SendNotice(wire::kBan, reason);
  CallStatusMessage({Quoted(target ? target->Username() : address), " Banned: ", reason});
  return isStored;
}

void MapSocket::BanUser(ClientSocket& banningClient, const std::string& userName,
                        const std::string& reason) {
  const NetworkRef network = banningClient.myNetwork;
  ForEachUser(userName, network->NetworkName, [&](ClientSocket& user) {
    Ban(user.RemoteAddress(), banningClient.Username(), reason, network->NetworkName, &user);
  });
}

}  // namespace corvane
