#include "server/network_host.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "framework/address_ranges.h"
#include "framework/exceptions.h"
#include "framework/text.h"
#include "net/poll_loop.h"
#include "server/client_socket.h"
#include "server/wire.h"

namespace corvane {
namespace {

using Kind = ServerEvent::Kind;

constexpr std::string_view kAllNetworks = "(All Networks)";

}  // namespace

NetworkHost::NetworkHost(PollLoop& loop, DatabaseConnection& serverdb, LocationLookup& locations,
                         Rules rules)
    : ServerSocket(loop, 2, 10), Context(loop, *this, serverdb, locations, std::move(rules)) {}

NetworkRef NetworkHost::FindNetwork(std::string_view name) const {
  // Folded at most once, and only if its length fits a network's name: a stranger may send a
  // long one.
  std::optional<std::string> folded;
  for (const NetworkRef& network : Networks) {
    if (!MayFoldTo(name.size(), network->FoldedName.size())) continue;
    if (!folded) folded = FoldText(name);
    if (network->FoldedName == *folded) return network;
  }
  return nullptr;
}

void NetworkHost::RemoveNetwork(const NetworkRef& entry) {
  if (std::ranges::find(Networks, entry) == Networks.end()) return;
  BroadcastMessage("This network has been removed from the server.", entry->NetworkName);
  DisconnectAllClientsOnNetwork(entry);
  // Searched again: the walks give way to other events, which may change the list.
  std::erase(Networks, entry);
}

void NetworkHost::DisconnectAllClientsOnNetwork(const NetworkRef& entry) {
  SendToMembers(*entry, wire::kBye, wire::kByeText);
}

void NetworkHost::BroadcastMessage(const std::string& text, const std::string& networkName) {
  if (text.empty()) return;
  Context.events.Raise({.kind = Kind::Message, .network = networkName, .text = text});
  const SharedBytes packet = MakePacket(wire::kMessage, text);
  const bool toAll = networkName == kAllNetworks;
  const std::string foldedName = FoldText(networkName);
  const auto connections = ActiveConnections();
  for (const std::shared_ptr<TCPSocket>& connection : *connections) {
    auto& recipient = static_cast<ClientSocket&>(*connection);
    if (recipient.myNetwork == nullptr && Context.rules.isMessageFatalWithoutNetwork) {
      throw NilObjectException();
    }
    if (recipient.HearsItsNetwork() && (recipient.myNetwork->FoldedName == foldedName || toAll)) {
      recipient.SendPackets(packet);
    }
    myLoop.GiveWay();
  }
}

void NetworkHost::SendToMembers(const ServerNetworks& network, std::int32_t command,
                                std::string_view data, const ClientSocket* except) {
  const SharedBytes packet = MakePacket(command, data);
  const auto members = Context.roster.MembersOf(network);
  for (const std::shared_ptr<ClientSocket>& member : *members) {
    if (member.get() != except) member->SendPackets(packet);
    myLoop.GiveWay();
  }
}

SharedBytes NetworkHost::MakePacket(std::int32_t command, std::string_view data) const {
  return CopyToBlock(myLoop.Memory().output, CreatePacket(command, data));
}

std::string NetworkHost::ForEachUser(const std::string& userName, const std::string& networkName,
                                     const std::function<void(ClientSocket&)>& act) {
  const std::string foldedName = FoldText(userName);
  const std::string foldedNetwork = FoldText(networkName);
  std::string lastExamined;
  const auto connections = ActiveConnections();
  for (const std::shared_ptr<TCPSocket>& connection : *connections) {
    auto& session = static_cast<ClientSocket&>(*connection);
    lastExamined = session.Username();
    const bool isThere = session.myNetwork && session.myNetwork->FoldedName == foldedNetwork;
    if (isThere && session.FoldedUsername() == foldedName) act(session);
    myLoop.GiveWay();
  }
  return lastExamined;
}

void NetworkHost::Kick(ClientSocket& target, const std::string& reason) {
  NotifyOfKick(target, reason);
  ReportKick(target.Username(), reason);
}

void NetworkHost::KickUser(const std::string& userName, const std::string& networkName,
                           const std::string& reason) {
  const auto notify = [&](ClientSocket& user) { NotifyOfKick(user, reason); };
  ReportKick(ForEachUser(userName, networkName, notify), reason);
}

void NetworkHost::NotifyOfKick(ClientSocket& target, const std::string& reason) {
  target.SendNotice(wire::kKicked, reason);
  Context.events.Raise({.kind = Kind::Kick,
                        .user = target.Username(),
                        .network = target.NetworkName(),
                        .address = target.RemoteAddress(),
                        .text = reason});
}

void NetworkHost::ReportKick(std::string_view userName, const std::string& reason) {
  CallStatusMessage({Quoted(userName), " Kicked: ", reason});
}

bool NetworkHost::Ban(const std::string& address, const std::string& by,
                      std::string_view givenReason, const std::string& networkName,
                      ClientSocket* target, const QDateTime& until) {
  const std::string reason(Beginning(givenReason, Context.rules.maxReason));
  // Before the notice, which may be sent at once: a ban is in force before anybody is notified.
  const bool isStored = Context.bans.Add(address, by, reason, networkName, until);
  if (target != nullptr) target->SendNotice(wire::kBanned, reason);
  Context.events.Raise({Kind::Ban, target ? target->Username() : std::string_view(), networkName,
                        address, by, reason});
  CallStatusMessage({Quoted(target ? target->Username() : address), " Banned: ", reason});
  return isStored;
}

bool NetworkHost::BanRange(const AddressRange& range, std::string_view givenReason,
                           const QDateTime& until) {
  const std::string reason(Beginning(givenReason, Context.rules.maxReason));
  const bool isStored = Context.bans.AddRange(range, reason, until);
  CallStatusMessage({TextOf(range), " Banned: ", reason});
  Context.events.Raise({.kind = Kind::Ban, .address = TextOf(range), .text = reason});
  for (const auto& session : SessionsIn(range)) {
    session->SendNotice(wire::kBanned, reason.empty() ? wire::kBannedText : reason);
    session->Close();
    myLoop.GiveWay();
  }
  return isStored;
}

std::vector<std::shared_ptr<ClientSocket>> NetworkHost::SessionsIn(
    const AddressRange& range) const {
  std::vector<std::shared_ptr<ClientSocket>> found;
  const auto connections = ActiveConnections();
  for (const std::shared_ptr<TCPSocket>& connection : *connections) {
    auto session = std::static_pointer_cast<ClientSocket>(connection);
    const auto address = IPv4FromText(session->RemoteAddress());
    if (address && range.first <= *address && *address <= range.last) {
      found.push_back(std::move(session));
    }
  }
  return found;
}

void NetworkHost::BanUser(ClientSocket& banningClient, const std::string& userName,
                          const std::string& reason) {
  const NetworkRef network = banningClient.myNetwork;
  ForEachUser(userName, network->NetworkName, [&](ClientSocket& user) {
    Ban(user.RemoteAddress(), banningClient.Username(), reason, network->NetworkName, &user);
  });
}

}  // namespace corvane
