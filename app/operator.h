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
#include "storage/ban.h"

namespace corvane {

class App;
class AppSettings;
class ClientSocket;
class DatabaseConnection;
class MapSocket;
class PollLoop;
class ServerLog;

// Everything that an operator can do, one method an action, and what he is shown: all that windows
// and the local socket know of the server. Nothing else changes networks, bans, administrators and
// settings on an operator's behalf. Borrows the application object and the listener.
//
// An action is noted in the log, with its actor, before it is carried out. Methods that return bool
// return whether it was stored. Where the database refuses that, standard error says so: a network
// is then as changed until the server ends, a ban counts for good (Bans), and administrators and
// bans to be lifted stay.
//
// Re-entrancy: methods that walk over connections, networks or bans give way to the connections, so
// sessions may come, act and go before these return. No method waits for a client, and none but
// ShowMessage runs Qt's event loop or opens a window.
class Operator {
 public:
  Operator(App& app, MapSocket& listener) : myApp(app), myListener(listener) {}

  // Events: a network was added to the list, or taken off it.
  Signal<const NetworkRef&> NetworkAdded;
  Signal<const NetworkRef&> NetworkRemoved;

  // While one exists, what is done is noted as done by this actor; otherwise by "window". They end
  // in the reverse order.
  class Acting {
   public:
    Acting(Operator& op, std::string actor)
        : myOperator(op), myBefore(std::exchange(op.myActor, std::move(actor))) {}
    ~Acting() { myOperator.myActor = std::move(myBefore); }
    Acting(const Acting&) = delete;
    Acting& operator=(const Acting&) = delete;

   private:
    Operator& myOperator;
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

  // In the order in which they were added. Valid until one is added or removed.
  const std::vector<NetworkRef>& Networks() const;
  // The name may be empty or in use already.
  bool AddNetwork(const std::string& name, const std::string& password, std::int32_t maxUsers,
                  bool enabled);
  // Counts for who logs in next; users who are in stay. The name stays: it is the record's key.
  bool ChangeNetwork(ServerNetworks& network, const std::string& password, std::int32_t maxUsers,
                     bool enabled);
  // Tells the network's users, sends them away and forgets the network. Throws as Send does.
  bool DeleteNetwork(const NetworkRef& network);
  // Why the last change was not stored; to be asked right behind it.
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
  // Changes the list as compared, as the methods above do, and leaves the database alone.
  // Throws as Send does where a network was removed.
  void ApplyChanges(const NetworkChanges& changes);

  // Who is connected as "ADDRESS:PORT", or is logged in under the name; none if nobody is. A text
  // that is an address and a port counts as a name only where `isName`: users choose their names.
  std::shared_ptr<ClientSocket> FindUser(const std::string& user, bool isName) const;

  // Sends the user a notice upon which clients leave; the connection stays as long as the rules let
  // it. A user who has left is sent nothing.
  void Kick(ClientSocket& user, const std::string& reason);
  // The same, with a ban of the address, also of a user who has left. Of a reason as much counts as
  // the rules allow.
  bool Ban(ClientSocket& user, const std::string& reason);
  // Bans an address, noted for a network, which may be empty.
  bool BanAddress(const std::string& address, const std::string& reason,
                  const std::string& networkName);
  // Ends the connection. Harmless where it has ended.
  void ForceDisconnect(ClientSocket& user);
  // Gives a user of this name and address an administrator's rights in the network, at once.
  bool MakeAdmin(const std::string& name, const std::string& address,
                 const std::string& networkName);

  // Sends a message to one network, or to all for the name "(All Networks)". Unless the rules have
  // it skipped, while a client is connected that has not chosen a network it throws
  // NilObjectException, as MapSocket::BroadcastMessage does.
  void Send(const std::string& text, const std::string& networkName);
  // The connections at which it would throw, "ADDRESS:PORT" each.
  std::vector<std::string> WithoutNetwork() const;

  // Calls `act` for each ban, those that wait for the database last, and gives way to the
  // connections in between. Returns false where a query fails.
  bool ForEachBan(const std::function<void(const corvane::Ban&)>& act);
  // The ban that was listed under this number. None also when the query fails.
  std::optional<corvane::Ban> FindBan(std::int64_t number);
  // By their numbers; one that is no longer there is no failure. A lifted ban lets its address in
  // from the next connection on, an administrator's rights end at once.
  bool LiftBans(const std::vector<std::int64_t>& ids);
  bool DeleteAdmins(const std::vector<std::int64_t>& ids);
  // None when the query fails.
  std::optional<std::vector<AdminsTable::Admin>> Admins();

  // For the next start. Returns whether the settings file was saved; if not, the old value stays.
  bool ChangeSetting(const std::string& name, const std::string& value);
  // Ends the program once its event loop runs again; harmless when it is ending.
  void Quit();
  // The same on behalf of this actor.
  void QuitFor(const std::string& actor);

 private:
  void AddToList(const NetworkRef& network);

  App& myApp;
  MapSocket& myListener;
  std::string myActor = "window";
};

}  // namespace corvane
