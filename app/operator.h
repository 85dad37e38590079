#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QDateTime>

#include "framework/message_box.h"
#include "framework/signal.h"
#include "framework/status_line.h"
#include "server/server_events.h"
#include "server/server_networks.h"
#include "storage/admins_table.h"
#include "storage/ban.h"
#include "storage/ban_ranges.h"
#include "storage/bans.h"

namespace corvane {

class App;
class AppSettings;
class ClientSocket;
class DatabaseConnection;
class MapSocket;
class PollLoop;
class ServerLog;

// Everything that an operator can do and see, one method per action. Windows and the local socket
// reach the server only through it, and nothing else changes networks, bans, administrators or
// settings on an operator's behalf. Borrows the application object and the listener.
//
// Each action is logged with its actor before it is carried out. Methods that return bool return
// whether the change was stored. If the database refuses a change, standard error has the reason. A
// network is then changed until the server ends, and a ban is in force (see Bans); administrators
// are not removed, and bans not lifted.
//
// Re-entrancy: methods that walk over connections, networks or bans give way to the connections, so
// sessions may begin, act and end before they return. No method waits for a client, and only
// ShowMessage runs Qt's event loop or opens a window.
class Operator {
 public:
  Operator(App& app, MapSocket& listener);

  // Events: a network was added to the list, or removed from it.
  Signal<const NetworkRef&> NetworkAdded;
  Signal<const NetworkRef&> NetworkRemoved;

  // While it exists, the log shows this actor for actions; otherwise it shows "window". Nested ones
  // must end in reverse order.
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

  // Writes an action to the audit log, with the actor.
  void LogAction(StatusParts what);

  // For reading only; changes go through the methods below.
  const MapSocket& Listener() const { return myListener; }
  const DatabaseConnection& Database() const;
  // What happens on the server.
  ServerEvents& Events() const;
  // Whether the database could be changed now. If not, StoreError() says why.
  bool TakesWrites();
  AppSettings& Settings() const;
  PollLoop& Loop() const;
  ServerLog& Log() const;
  MessageBox::Answer ShowMessage(const MessageBox& box) const;

  // In the order in which they were added. Valid until one is added or removed.
  const std::vector<NetworkRef>& Networks() const;
  // The name may be empty or in use already.
  bool AddNetwork(const std::string& name, const std::string& password, std::int32_t maxUsers,
                  bool enabled);
  // Applies to later logins; users who are logged in stay. The name cannot change: it is the
  // record's key.
  bool ChangeNetwork(ServerNetworks& network, const std::string& password, std::int32_t maxUsers,
                     bool enabled);
  // Sends the network's users a notice and "BYE", and removes the network. Throws as Send does.
  bool DeleteNetwork(const NetworkRef& network);
  // Why the last change was not stored. Valid until the next use of the database.
  std::string StoreError() const;
  // Sends "BYE" to the network's users, who end their connections.
  void DisconnectAll(const NetworkRef& network);

  // How the networks in the database differ from those in the list. Networks match by name;
  // several of one name match in their order.
  struct NetworkChanges {
    std::vector<NetworkRef> removed;
    std::vector<std::pair<NetworkRef, NetworkRef>> changed;  // the listed one, the stored one
    std::vector<NetworkRef> added;
  };
  // None if the query fails.
  std::optional<NetworkChanges> CompareNetworks();
  // Applies these changes to the list, as the methods above do, but not to the database. Throws as
  // Send does if a network is removed.
  void ApplyChanges(const NetworkChanges& changes);

  // The session at "ADDRESS:PORT", or the one logged in under that name; null if there is none.
  // Since users choose their names, a text that looks like an address and port is a name only if
  // `isName`.
  std::shared_ptr<ClientSocket> FindUser(const std::string& user, bool isName) const;

  // Sends the user a notice, at which clients disconnect. The rules may set a time
  // after which one that does not is disconnected. Does nothing to a user who has left.
  void Kick(ClientSocket& user, const std::string& reason);
  // The same, and bans the address, even if the user has left. The rules may shorten the reason.
  bool Ban(ClientSocket& user, const std::string& reason, const QDateTime& until = {});
  // Bans an address. The network is only recorded with it and may be empty. Both bans end then if
  // the date is valid: they are lifted, with a status line each.
  bool BanAddress(const std::string& address, const std::string& reason,
                  const std::string& networkName, const QDateTime& until = {});
  // Bans a range and disconnects the sessions in it, whose addresses SessionsIn returns before.
  bool BanRange(const AddressRange& range, const std::string& reason, const QDateTime& until);
  // Bans all of them, a portion per turn of Qt's loop (Bans::Import). They count from a client's
  // next connection on. Returns false if another list is being stored.
  bool ImportBans(BanImport::List list, const std::string& reason, const QDateTime& until,
                  Bans::ImportDone done);
  // Adds the network with these administrators and bans, all or nothing, in the same way.
  bool ImportNetwork(const NetworkRef& network, const std::vector<AdminsTable::Admin>& admins,
                     std::vector<corvane::Ban> bans, Bans::ImportDone done);
  std::vector<std::string> SessionsIn(const AddressRange& range) const;
  // Ends the connection; does nothing if it has ended.
  void ForceDisconnect(ClientSocket& user);
  // Makes the user of this name and address an administrator of the network, at once.
  bool MakeAdmin(const std::string& name, const std::string& address,
                 const std::string& networkName);

  // Sends a message to one network, or to all for the name "(All Networks)". Throws
  // NilObjectException, as MapSocket::BroadcastMessage does, if it reaches a client that has not
  // chosen a network and the rules do not skip it.
  void Send(const std::string& text, const std::string& networkName);
  // The connections at which Send would throw, each as "ADDRESS:PORT".
  std::vector<std::string> WithoutNetwork() const;

  // Calls `act` for each ban, those not yet stored last, and gives way to the connections in
  // between. Returns false if a query fails.
  bool ForEachBan(const std::function<void(const corvane::Ban&)>& act);
  // All bans of an address; none if the query fails.
  std::optional<std::vector<corvane::Ban>> BansOf(const std::string& address);
  // The ban listed under this number; none also if the query fails.
  std::optional<corvane::Ban> FindBan(std::int64_t number);
  // Both take the records' numbers and skip deleted records. A lifted ban no longer
  // refuses its address; a deleted administrator loses the rights at once.
  bool LiftBans(const std::vector<std::int64_t>& ids);
  bool DeleteAdmins(const std::vector<std::int64_t>& ids);
  // The banned ranges that have not ended, those not yet stored last.
  std::vector<corvane::BanRange> BannedRanges();
  bool LiftRanges(const std::vector<std::int64_t>& ids);
  // None if the query fails.
  std::optional<std::vector<AdminsTable::Admin>> Admins();

  // Takes effect at the next start. Returns false, and keeps the old value, if the settings file
  // could not be saved.
  bool ChangeSetting(const std::string& name, const std::string& value);
  // Ends the program when control returns to its event loop. Safe to call twice.
  void Quit();
  // The same, with this actor in the audit log.
  void QuitFor(const std::string& actor);

 private:
  void AddToList(const NetworkRef& network);
  void Raise(ServerEvent::Kind kind, const ServerNetworks& network) const;
  void RaiseLifted(const std::string& what) const;
  void LogGrant(const AdminsTable::Admin& admin);
  // Lift the bans and ranges that have ended.
  void EndBans();
  void EndRanges();

  App& myApp;
  MapSocket& myListener;
  std::string myActor = "window";
  SignalConnection myEnds;
};

}  // namespace corvane
