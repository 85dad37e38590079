#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/status_line.h"
#include "net/server_socket.h"
#include "server/server_networks.h"
#include "server/session_context.h"

namespace corvane {

class ClientSocket;

// A listener that hosts networks: keeps their list and carries out the actions of the operator and
// the administrators on networks and users. Its connections are sessions (ClientSocket). Borrows
// the database and the location lookup.
//
// Re-entrancy: a method that walks over the sessions gives way to the connections, so sessions may
// begin, act and end before it returns. It visits the sessions that were active when it began.
class NetworkHost : public ServerSocket {
 public:
  NetworkHost(PollLoop& loop, DatabaseConnection& serverdb, LocationLookup& locations, Rules rules);

  // In the order in which they were added.
  std::vector<NetworkRef> Networks;

  SessionContext Context;

  // The first network of that name; none if there is none.
  NetworkRef FindNetwork(std::string_view name) const;

  // Notifies and disconnects the network's users and drops the network. Does nothing for an entry
  // that is not in Networks. Throws as BroadcastMessage does.
  void RemoveNetwork(const NetworkRef& entry);

  // Sends "BYE" (command 999) to the network's members, whose clients end the connections.
  void DisconnectAllClientsOnNetwork(const NetworkRef& entry);

  // Sends an operator's message (command 998) to one network, or to all of them for the name
  // "(All Networks)". Sends nothing if the text is empty. Unless the rules skip them, throws
  // NilObjectException at the first connection without a network: deliberate, and the connections
  // after it receive nothing.
  void BroadcastMessage(const std::string& text, const std::string& networkName);

  // Sends one session the kick notice (command 996).
  void Kick(ClientSocket& target, const std::string& reason);
  // The same for the users of that name in the network. The status line names the session that was
  // examined last, not the one that was kicked: deliberate.
  void KickUser(const std::string& userName, const std::string& networkName,
                const std::string& reason);

  // Bans an address and then sends the ban notice (command 997) to the `target`, if any. Cuts the
  // reason to the length that the rules allow. The ban ends then if the date is valid. Returns
  // whether the ban is in the database already; if not, it is in force nevertheless (see Bans).
  bool Ban(const std::string& address, const std::string& by, std::string_view givenReason,
           const std::string& networkName, ClientSocket* target = nullptr,
           const QDateTime& until = {});
  // Bans a range, with its reason as it is, and then sends the sessions in it the ban notice and
  // closes them. Returns as Ban does.
  bool BanRange(const AddressRange& range, std::string_view givenReason, const QDateTime& until);
  // The connected sessions with an address in the range.
  std::vector<std::shared_ptr<ClientSocket>> SessionsIn(const AddressRange& range) const;
  // Bans the address of each user of that name in the banning client's network.
  void BanUser(ClientSocket& banningClient, const std::string& userName, const std::string& reason);

  virtual void CallStatusMessage(StatusParts parts) = 0;

 protected:
  // Sends the same message to all members of a network but one.
  void SendToMembers(const ServerNetworks& network, std::int32_t command, std::string_view data,
                     const ClientSocket* except = nullptr);

 private:
  SharedBytes MakePacket(std::int32_t command, std::string_view data) const;
  // Calls `act` for each user of that name in the network. Returns the user name of the last
  // session that it examined, matching or not.
  std::string ForEachUser(const std::string& userName, const std::string& networkName,
                          const std::function<void(ClientSocket&)>& act);
  void NotifyOfKick(ClientSocket& target, const std::string& reason);
  void ReportKick(std::string_view userName, const std::string& reason);
};

}  // namespace corvane
