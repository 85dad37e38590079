#include "control/actions.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <QJsonArray>

#include "app/operator.h"
#include "control/answers.h"
#include "control/ban_actions.h"
#include "control/lookup.h"
#include "framework/ip_address.h"
#include "framework/status_line.h"
#include "framework/text.h"
#include "platform/service_manager.h"
#include "server/client_socket.h"
#include "server/map_socket.h"
#include "server/setting.h"
#include "storage/app_settings.h"
#include "storage/database_connection.h"

namespace corvane {
namespace {

// Bans and grants are looked up by text, so an address must have its usual spelling.
std::string AddressIn(const std::string& text) {
  if (const auto address = AddressFromText(text)) return *address;
  throw Misused("\"address\" takes an address such as 192.0.2.17 or 2001:db8::17, not \"" + text +
                '"');
}

}  // namespace

std::shared_ptr<ClientSocket> Actions::UserOf(const Request& request) const {
  const std::string name = request.Text("user");
  std::shared_ptr<ClientSocket> user = myOperator.FindUser(name, request.Flag("name"));
  if (user == nullptr) {
    throw Refused("there is nobody \"" + name + "\"; expected a user's name or ADDRESS:PORT");
  }
  return user;
}

void Actions::ExpectStored(bool isStored) const {
  if (isStored) return;
  throw Refused("done until the server ends, but not stored: database: " + myOperator.StoreError());
}

void Actions::ExpectAllHaveNetworks(const Request& request) const {
  const std::vector<std::string> without = myOperator.WithoutNetwork();
  if (without.empty() || request.Flag("force")) return;
  QJsonArray addresses;
  for (const std::string& address : without)
    addresses.append(DisplayText(address));
  throw Refused(
      "a message would end the server while a client is connected that has not chosen a network; "
      "disconnect these clients, wait, or use --force",
      {{"addresses", addresses}});
}

QByteArray Actions::AddNetwork(const Request& request) {
  const std::string name = request.Text("name");
  const std::string password = request.OptionalText("password").value_or("");
  const std::int32_t maxUsers =
      request.OptionalNumber("max-users", kMinSeats, kMaxSeats).value_or(kDefaultSeats);
  if (myOperator.Listener().FindNetwork(name))
    throw Refused("there is already a network \"" + name + '"');
  ExpectStored(myOperator.AddNetwork(name, password, maxUsers, !request.Flag("disabled")));
  return DoneLine("Added the network " + name + '.');
}

QByteArray Actions::EditNetwork(const Request& request) {
  const NetworkRef network = NetworkNamed(myOperator, request.Text("name"));
  const std::string password = request.OptionalText("password").value_or(network->Password);
  const std::int32_t maxUsers =
      request.OptionalNumber("max-users", kMinSeats, kMaxSeats).value_or(network->MaxUsers);
  const bool enables = request.Flag("enable");
  const bool disables = request.Flag("disable");
  if (enables && disables) throw Misused("expected \"enable\" or \"disable\", not both");
  ExpectStored(myOperator.ChangeNetwork(*network, password, maxUsers,
                                        (network->Enabled || enables) && !disables));
  return DoneLine("Changed the network " + network->NetworkName + '.');
}

QByteArray Actions::DeleteNetwork(const Request& request) {
  const NetworkRef network = NetworkNamed(myOperator, request.Text("name"));
  ExpectAllHaveNetworks(request);
  ExpectStored(myOperator.DeleteNetwork(network));
  return DoneLine("Deleted the network " + network->NetworkName + '.');
}

QByteArray Actions::DisconnectNetwork(const Request& request) {
  const NetworkRef network = NetworkNamed(myOperator, request.Text("name"));
  myOperator.DisconnectAll(network);
  return DoneLine("Disconnected the users of " + network->NetworkName + '.');
}

QByteArray Actions::Kick(const Request& request) {
  const std::string reason = request.Text("reason");
  const std::shared_ptr<ClientSocket> user = UserOf(request);
  myOperator.Kick(*user, reason);
  return DoneLine(StatusLine({"Kicked ", user->Username(), "."}));
}

QByteArray Actions::Ban(const Request& request) {
  const std::string reason = request.OptionalText("reason").value_or("");
  const std::shared_ptr<ClientSocket> user = UserOf(request);
  const QDateTime until = EndOf(request, myOperator);
  const bool isStored = myOperator.Ban(*user, reason, until);
  return BannedLine(myOperator,
                    StatusLine({"Banned ", user->RemoteAddress(), ", ", user->Username()}), until,
                    isStored);
}

QByteArray Actions::BanAddress(const Request& request) {
  const std::string address = AddressIn(request.Text("address"));
  const std::string reason = request.OptionalText("reason").value_or("");
  const std::optional<std::string> network = request.OptionalText("network");
  const QDateTime until = EndOf(request, myOperator);
  const bool isStored = myOperator.BanAddress(
      address, reason, network ? NetworkNamed(myOperator, *network)->NetworkName : "", until);
  return BannedLine(myOperator, "Banned " + address, until, isStored);
}

QByteArray Actions::Unban(const Request& request) {
  const std::string wanted = request.Text("ban");
  const std::string address = AddressFromText(wanted).value_or(wanted);
  std::vector<std::int64_t> ids;
  bool isNumber = false;
  const std::int64_t number = DisplayText(wanted).toLongLong(&isNumber);
  if (isNumber && myOperator.FindBan(number)) ids.push_back(number);
  for (const corvane::Ban& ban : RowsOrRefuse(myOperator.BansOf(address), myOperator))
    ids.push_back(ban.id);
  if (ids.empty()) throw Refused("there is no ban of " + wanted);
  if (!myOperator.LiftBans(ids)) RefuseForDatabase(myOperator);
  return DoneLine("Lifted " + std::to_string(ids.size()) + " ban(s).");
}

QByteArray Actions::Disconnect(const Request& request) {
  const std::shared_ptr<ClientSocket> user = UserOf(request);
  const std::string peer = user->PeerName();
  myOperator.ForceDisconnect(*user);
  return DoneLine("Disconnected " + peer + '.');
}

QByteArray Actions::Grant(const Request& request) {
  const std::optional<std::string> network = request.OptionalText("network");
  const std::optional<std::string> address = request.OptionalText("address");
  if (network.has_value() != address.has_value()) {
    throw Misused("expected both a network and an address, or neither for a user who is logged in");
  }
  AdminsTable::Admin wanted;
  if (network) {
    wanted = {0, request.Text("user"), NetworkNamed(myOperator, *network)->NetworkName,
              AddressIn(*address)};
  } else {
    const std::shared_ptr<ClientSocket> user = UserOf(request);
    if (user->Username().empty()) throw Refused(user->PeerName() + " has not logged in");
    wanted = {0, user->Username(), user->NetworkName(), user->RemoteAddress()};
  }
  const auto admins = myOperator.Admins();
  const auto isTheSame = [&wanted](const AdminsTable::Admin& other) {
    return other.name == wanted.name && other.network == wanted.network &&
           other.address == wanted.address;
  };
  if (admins && std::ranges::any_of(*admins, isTheSame)) {
    throw Refused(StatusLine({wanted.name, " of ", wanted.network, ", ", wanted.address,
                              ", is already an administrator"}));
  }
  if (!myOperator.MakeAdmin(wanted.name, wanted.address, wanted.network)) {
    RefuseForDatabase(myOperator);
  }
  return DoneLine(StatusLine({wanted.name, " is an administrator."}));
}

QByteArray Actions::Revoke(const Request& request) {
  const std::string wanted = request.Text("admin");
  const std::optional<std::string> network = request.OptionalText("network");
  std::vector<std::int64_t> ids;
  for (const AdminsTable::Admin& one : RowsOrRefuse(myOperator.Admins(), myOperator)) {
    const bool isWanted = SameText(one.name, wanted) || std::to_string(one.id) == wanted;
    if (isWanted && (!network || SameText(one.network, *network))) ids.push_back(one.id);
  }
  if (ids.empty()) throw Refused("there is no administrator \"" + wanted + '"');
  if (!myOperator.DeleteAdmins(ids)) RefuseForDatabase(myOperator);
  return DoneLine("Revoked " + std::to_string(ids.size()) + " grant(s).");
}

QByteArray Actions::Message(const Request& request) {
  const std::string text = request.Text("text");
  const std::optional<std::string> network = request.OptionalText("network");
  const std::string to =
      network ? NetworkNamed(myOperator, *network)->NetworkName : "(All Networks)";
  ExpectAllHaveNetworks(request);
  myOperator.Send(text, to);
  return DoneLine("Sent.");
}

QByteArray Actions::Set(const Request& request) {
  const std::string name = request.Text("name");
  const std::string value = request.OptionalText("value").value_or("");
  const Setting* const setting = FindSetting(name);
  if (setting == nullptr && !request.Flag("force")) {
    std::string known;
    for (const Setting& other : KnownSettings()) {
      if (other.ignored.empty()) known.append(known.empty() ? "" : ", ").append(other.name);
    }
    throw Refused("there is no setting " + name + "; expected one of: " + known);
  }
  if (setting != nullptr && !setting->takes(value)) throw Misused(setting->Refusal(value));
  if (!myOperator.ChangeSetting(name, value)) {
    throw Refused("not saved: " + myOperator.Settings().SaveError());
  }
  if (setting == nullptr) return DoneLine("Set, but the server does not know " + name + '.');
  if (!setting->ignored.empty()) return DoneLine(StatusLine({"Set, but ", setting->ignored, "."}));
  return DoneLine("Set; takes effect at the next start.");
}

QByteArray Actions::Reload(const Request& request) {
  std::optional<ServiceReload> reload;
  // A server that does not listen has never reported that it is ready.
  if (myOperator.Listener().IsListening()) reload.emplace();
  if (myOperator.Database().HasMoved()) {
    throw Refused(
        "database: the file was replaced or deleted; restart the server to open the new one");
  }
  const auto changes = RowsOrRefuse(myOperator.CompareNetworks(), myOperator);
  if (!changes.removed.empty()) ExpectAllHaveNetworks(request);
  myOperator.ApplyChanges(changes);
  RowsAnswer answer;
  const auto add = [&](const char* change, const ServerNetworks& network) {
    QJsonObject row = NetworkRow(network);
    row["change"] = change;
    answer.Add(row);
  };
  for (const NetworkRef& network : changes.removed)
    add("removed", *network);
  for (const auto& [network, stored] : changes.changed)
    add("changed", *network);
  for (const NetworkRef& network : changes.added)
    add("added", *network);
  return answer.Line();
}

}  // namespace corvane
