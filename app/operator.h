#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/message_box.h"
#include "framework/signal.h"
#include "framework/status_line.h"
#include "server/server_networks.h"
#include "storage/admins_table.h"
#include "storage/bans_table.h"

namespace corvane {

class App;
class AppSettings;
class ClientSocket;
class DatabaseConnection;
class MapSocket;
class PollLoop;
class ServerLog;

// Everything that an operator can do, one method an action, and what he is shown: all that windows
// and the local socket know of the server. Borrows the application object and the listener. Where
// the database refuses a write, standard error says so, and the action counts until the server
// ends.
class Operator {
 public:
  Operator(App& app, MapSocket& listener) : myApp(app), myListener(listener) {}

  // Events: a network was added to the list, or taken off it.
  Signal<const NetworkRef&> NetworkAdded;
  Signal<const NetworkRef&> NetworkRemoved;

  // While one exists, what is done is noted as done by this actor; otherwise by "window".
  class Acting {
   public:
    Acting(Operator& actions, std::string actor)
        : myActions(actions), myBefore(std::exchange(actions.myActor, std::move(actor))) {}
    ~Acting() { myActions.myActor = std::move(myBefore); }
    Acting(const Acting&) = delete;
    Acting& operator=(const Acting&) = delete;

   private:
    Operator& myActions;
    std::string myBefore;
  };

  // Notes what is being done, and by whom.
  void Note(StatusParts what);

  // For those who show what there is; changes go by the methods below.
  const MapSocket& Listener() const { return myListener; }
  const DatabaseConnection& Database() const;
  AppSettings& Settings() const;
  PollLoop& Loop() const;
  ServerLog& Log() const;
  MessageBox::Answer ShowMessage(const MessageBox& box) const;

  // In the order in which they were added.
  const std::vector<NetworkRef>& Networks() const;
  // These return whether the change was stored. A name may be empty or in use already.
  bool AddNetwork(const std::string& name, const std::string& password, std::int32_t maxUsers,
                  bool enabled);
  // The name stays: it is the record's key.
  bool ChangeNetwork(ServerNetworks& network, const std::string& password, std::int32_t maxUsers,
                     bool enabled);
  // Tells the network's users, sends them away and forgets the network. Throws as Send does.
  bool DeleteNetwork(const NetworkRef& network);
  // Why the last change was not stored.
  std::string StoreError() const;
  // Sends "BYE" to the network's users, who end their connections.
  void DisconnectAll(const NetworkRef& network);

  // How the networks in the database differ from those in the list, for which the name tells which
  // is which, and of several that have it their order.
  struct NetworkChanges {
    std::vector<NetworkRef> removed;
    std::vector<std::pair<NetworkRef, NetworkRef>> changed;  // the listed one, the stored one
    std::vector<NetworkRef> added;
  };
  // None when the query fails.
  std::optional<NetworkChanges> CompareNetworks();
  // Does what is different to the list, as the actions above do, and leaves the database alone.
  // Throws as Send does where a network was removed.
  void Follow(const NetworkChanges& changes);

  // Who is connected as "ADDRESS:PORT", or is logged in under the name; none if nobody is. A text
  // that is an address and a port counts as a name only where `isName`: users choose their names.
  std::shared_ptr<ClientSocket> FindUser(const std::string& user, bool isName) const;

  // What the user is sent asks it to leave; the connection stays as long as the rules let it.
  void Kick(ClientSocket& user, const std::string& reason);
  // The same, with a ban of the user's address. A ban that was not stored counts all the same, and
  // the server goes on trying to store it; these return whether it was.
  bool Ban(ClientSocket& user, const std::string& reason);
  // Bans an address, noted for a network, which may be empty.
  bool BanAddress(const std::string& address, const std::string& givenReason,
                  const std::string& networkName);
  // Ends the connection.
  void ForceDisconnect(ClientSocket& user);
  bool MakeAdmin(const ClientSocket& user);
  bool MakeAdmin(const std::string& name, const std::string& address,
                 const std::string& networkName);

  // Sends a message to one network, or to all for the name "(All Networks)". Unless the rules have
  // it skipped, while a client is connected that has not chosen a network it throws
  // NilObjectException, as MapSocket::BroadcastMessage does.
  void Send(const std::string& text, const std::string& networkName);
  // Whose connections would have it throw, "ADDRESS:PORT" each.
  std::vector<std::string> WithoutNetwork() const;

  // None when the query fails. Reading gives way to the connections.
  std::optional<std::vector<BansTable::Ban>> Bans();
  bool LiftBans(const std::vector<std::int64_t>& ids);
  std::optional<std::vector<AdminsTable::Admin>> Admins();
  bool DeleteAdmins(const std::vector<std::int64_t>& ids);

  // For the next start; whether it was saved.
  bool ChangeSetting(const std::string& name, const std::string& value);
  // Ends the program.
  void Quit();
  // The same on behalf of this actor.
  void QuitFor(const std::string& actor);

 private:
  void Enter(const NetworkRef& network);

  App& myApp;
  MapSocket& myListener;
  std::string myActor = "window";
};

}  // namespace corvane
