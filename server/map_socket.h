#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/signal.h"
#include "framework/status_line.h"
#include "geo/location_lookup.h"
#include "net/server_socket.h"
#include "server/address_table.h"
#include "server/cost_gate.h"
#include "server/log_in_deadlines.h"
#include "server/roster.h"
#include "server/rules.h"
#include "server/server_networks.h"
#include "server/turns.h"
#include "storage/admins_table.h"
#include "storage/bans.h"

namespace corvane {

class ClientSocket;

// The server's listener: makes a session for every connection, keeps the networks, relays each
// session's position to its network and carries out the operator's and the administrators'
// commands. Owns its sessions through the pool; borrows the database and the location lookup.
// What it tells the console goes through the three events.
class MapSocket : public ServerSocket {
 public:
  MapSocket(PollLoop& loop, DatabaseConnection& serverdb, LocationLookup& locations, Rules rules);
  ~MapSocket() override;

  // Events.
  Signal<MapSocket&, const std::string&> StatusMessage;
  Signal<MapSocket&, const std::shared_ptr<ClientSocket>&> UserLoggedIn;
  Signal<MapSocket&, const std::shared_ptr<ClientSocket>&> UserLoggedOut;

  // Events: a status line for the log; and what an operator or administrator did, for the log and
  // its audit. A handler that is not set is not called.
  std::function<void(const std::string&)> Logged;
  std::function<void(const std::string&)> Audited;

  void CallStatusMessage(StatusParts parts);
  // The same for what a session of the address does, as far as the rules let it.
  void CallStatusMessageFor(const std::string& address, StatusParts parts);
  // Notes who did what, as LogLine makes it.
  void Note(const std::string& line) const;
  void CallUserLoggedIn(ClientSocket& client);
  void CallUserLoggedOut(ClientSocket& client);

  // Sends the sender's state to every other session of its network (command 5), together with what
  // else is reported until the next flush. A sender whose name is too long for what memory is left
  // fails.
  void BroadcastPosition(ClientSocket& sender);

  // Sends an operator's message (command 998) to one network, or to all of them for the name
  // "(All Networks)". An empty text sends nothing. Unless the rules have it skipped, throws
  // NilObjectException at the first connection that has no network: deliberate, and the connections
  // after it receive nothing.
  void BroadcastMessage(const std::string& text, const std::string& networkName);

  // Tells the rest of the network that a user left (command 6).
  void ClientDisconnect(ClientSocket& leaving);

  // The first network of that name; none if there is none.
  NetworkRef FindNetwork(std::string_view name) const;

  // Tells the network's users, sends them away and forgets the network. An entry that is not in
  // Networks changes nothing. Throws as BroadcastMessage does.
  void RemoveNetwork(const NetworkRef& entry);

  // Sends "BYE" (command 999) to the network's clients; they end their connections.
  void DisconnectAllClientsOnNetwork(const NetworkRef& entry);

  // Sends one session the kick notice (command 996).
  void Kick(ClientSocket& target, const std::string& reason);
  // The same for the users of that name in the network. The status line names the session that was
  // looked at last, not the one that was kicked: deliberate.
  void KickUser(const std::string& userName, const std::string& networkName,
                const std::string& reason);

  // Bans an address, with as much of the reason as the rules allow, and then sends the session for
  // which that is done, if any, the ban notice (command 997). Returns whether the ban is in the
  // database already.
  bool Ban(const std::string& address, const std::string& by, std::string_view givenReason,
           const std::string& networkName, ClientSocket* target = nullptr);
  // Bans the address of each user of that name in the banning client's network.
  void BanUser(ClientSocket& banningClient, const std::string& userName, const std::string& reason);

  // In the order in which they were added.
  std::vector<NetworkRef> Networks;

  const Rules& RulesInForce() const { return myRules; }

  // What sessions use.
  Roster& Sessions() { return myRoster; }
  LocationLookup& Locations() { return myLocations; }
  Bans& BansInForce() { return myBans; }
  AdminsTable& Admins() { return myAdmins; }
  // Questions to the database by users whose names may make them costly.
  CostGate& CostlyQuestions() { return myCostlyQuestions; }
  Turns& MemberLists() { return myMemberLists; }
  AddressTable& Addresses() { return myAddresses; }
  LogInDeadlines& Deadlines() { return myDeadlines; }

 protected:
  bool Event_Accepted(const os::Endpoint& peer) override;
  std::shared_ptr<TCPSocket> Event_AddSocket() override;
  void Event_Error(std::int32_t code) override;
  void Event_HandedOff(const std::shared_ptr<TCPSocket>& socket) override;
  void Event_GivenBack(const std::shared_ptr<TCPSocket>& socket) override;

 private:
  // One message for many receivers.
  Slice MakePacket(std::int32_t command, std::string_view data) const;
  // Calls `act` for each user of that name in the network. Returns the name of the session that was
  // looked at last, of all there are.
  std::string ForEachUser(const std::string& userName, const std::string& networkName,
                          const std::function<void(ClientSocket&)>& act);
  void TellKick(std::string_view userName, const std::string& reason);

  const Rules myRules;
  LocationLookup& myLocations;
  Bans myBans;
  AdminsTable myAdmins;
  CostGate myCostlyQuestions;
  Turns myMemberLists;
  AddressTable myAddresses{myLoop, *this, myRules};
  LogInDeadlines myDeadlines{myLoop, *this, myRules.timeToLogIn};
  Roster myRoster;
  // Connected still, though the listener they came from was closed.
  std::vector<std::weak_ptr<ClientSocket>> myUnlinked;
};

}  // namespace corvane
