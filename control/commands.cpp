#include "control/commands.h"

#include <memory>
#include <optional>
#include <vector>

#include <QCoreApplication>
#include <QFileInfo>
#include <QHostAddress>
#include <QJsonArray>

#include "control/answers.h"
#include "control/server_log.h"
#include "framework/dates.h"
#include "framework/numbers.h"
#include "framework/process_memory.h"
#include "framework/text.h"
#include "server/app.h"
#include "server/client_socket.h"
#include "server/map_socket.h"
#include "server/operator.h"
#include "updater/version.h"

namespace corvane {
namespace {

constexpr std::int32_t kFewestSeats = 1;
constexpr std::int32_t kMostSeats = 1000;
constexpr std::int32_t kUsualSeats = 5;
constexpr std::int32_t kMostLogLines = 10'000;
constexpr std::int32_t kUsualLogLines = 20;
// By whom what is done here is noted.
const std::string kActor = "corvanectl";

QJsonObject NetworkRow(const ServerNetworks& network) {
  return {{"name", AnswerText(network.NetworkName)},
          {"users", network.CurrentUsers},
          {"max-users", network.MaxUsers},
          {"enabled", network.Enabled}};
}

}  // namespace

const Commands::Entry Commands::kEntries[] = {
    {"status", &Commands::Status},
    {"users", &Commands::Users},
    {"networks", &Commands::Networks},
    {"bans", &Commands::Bans},
    {"admins", &Commands::Admins},
    {"settings", &Commands::Settings},
    {"network add", &Commands::AddNetwork},
    {"network edit", &Commands::EditNetwork},
    {"network delete", &Commands::DeleteNetwork},
    {"network disconnect", &Commands::DisconnectNetwork},
    {"kick", &Commands::Kick},
    {"ban", &Commands::Ban},
    {"ban-address", &Commands::BanAddress},
    {"unban", &Commands::Unban},
    {"disconnect", &Commands::Disconnect},
    {"grant", &Commands::Grant},
    {"revoke", &Commands::Revoke},
    {"message", &Commands::Message},
    {"set", &Commands::Set},
    {"backup", &Commands::MakeBackup},
    {"log", &Commands::Log},
    {"quit", &Commands::Quit},
};

Commands::Commands(App& app, MapSocket& listener, Operator& actions, ServerLog& log)
    : myApp(app), myListener(listener), myActions(actions), myLog(log), myRates(app.Loop()) {
  myLog.Written = [this](const std::string& line) { Tell(line); };
}

Commands::~Commands() {
  myLog.Written = nullptr;
}

void Commands::Run(ControlConnection& client, const QByteArray& line) {
  const Operator::Acting acting(myActions, kActor);
  try {
    const Request request(line);
    myClient = &client;
    const QByteArray answer = Carry(request);
    if (!answer.isEmpty()) client.Answer(answer);
    if (request.Flag("follow")) {
      client.StartFollowing();
      myFollowers.emplace_back(&client);
    }
  } catch (const Refused& refused) {
    client.Answer(RefusalLine(refused.what(), refused.fields));
  }
}

void Commands::Tell(const std::string& text) {
  std::erase(myFollowers, nullptr);
  if (myFollowers.empty()) return;
  const QByteArray line = Line({{"line", DisplayText(text)}});
  for (const auto& follower : myFollowers)
    follower->SendFollowed(line);
}

QByteArray Commands::Carry(const Request& request) {
  const std::string command = request.Text("command");
  std::string known;
  for (const Entry& entry : kEntries) {
    if (command == entry.name) return (this->*entry.run)(request);
    known += known.empty() ? "" : ", ";
    known += entry.name;
  }
  throw Refused("no such command; expected is one of: " + known);
}

QByteArray Commands::Status(const Request&) {
  QJsonArray networks;
  for (const NetworkRef& network : myActions.Networks())
    networks.append(NetworkRow(*network));
  const auto& nic = myListener.NetworkInterface;
  const Rates::Rate rate = myRates.Now();
  const auto bytes = [](std::uint64_t count) { return static_cast<qint64>(count); };
  return DoneLine(QJsonObject{
      {"version", DisplayText(RunningVersion().FullVersion())},
      {"up-since", myStart.toLocalTime().toString(Qt::ISODate)},
      {"rules", DisplayText(std::string(myApp.RulesInForce().name))},
      {"listening", myListener.IsListening()},
      {"address", DisplayText(nic ? nic->IPAddress : "0.0.0.0")},
      {"port", myListener.Port()},
      {"connections", static_cast<qint64>(myListener.ActiveConnections()->size())},
      {"memory", bytes(ProcessMemory())},
      {"output-held", bytes(myApp.Loop().OutputBuffers().InUse())},
      {"input-held", bytes(myApp.Loop().InputBuffers().InUse())},
      {"messages-per-second", qRound64(rate.messages)},
      {"received-per-second", qRound64(rate.received)},
      {"sent-per-second", qRound64(rate.sent)},
      {"networks", networks},
  });
}

QByteArray Commands::Users(const Request& request) {
  const std::optional<std::string> wanted = request.OptionalText("network");
  const NetworkRef network = wanted ? NetworkNamed(*wanted) : nullptr;
  RowsAnswer answer;
  const auto connections = myListener.ActiveConnections();
  for (const auto& connection : *connections) {
    const auto& user = static_cast<const ClientSocket&>(*connection);
    if (user.LoginState() == ClientSocket::State::LoggedIn &&
        (network == nullptr || user.myNetwork == network)) {
      answer.Add({{"name", AnswerText(user.Username())},
                  {"network", AnswerText(user.NetworkName())},
                  {"address", DisplayText(user.PeerName())}});
    }
    myApp.Loop().GiveWay();
  }
  return answer.Line();
}

QByteArray Commands::Networks(const Request&) {
  RowsAnswer answer;
  for (const NetworkRef& network : myActions.Networks())
    answer.Add(NetworkRow(*network));
  return answer.Line();
}

QByteArray Commands::Bans(const Request&) {
  const auto bans = myActions.Bans();
  if (!bans) throw Refused("database: " + myActions.StoreError());
  RowsAnswer answer;
  for (const BansTable::Ban& ban : *bans) {
    answer.Add({{"id", static_cast<qint64>(ban.id)},
                {"address", AnswerText(ban.address)},
                {"by", AnswerText(ban.by)},
                {"reason", AnswerText(ban.reason)},
                {"date", DisplayText(StoredDate(ban.bandate))},
                {"network", AnswerText(ban.network)}});
    myApp.Loop().GiveWay();
  }
  return answer.Line();
}

QByteArray Commands::Admins(const Request&) {
  const auto admins = myActions.Admins();
  if (!admins) throw Refused("database: " + myActions.StoreError());
  RowsAnswer answer;
  for (const AdminsTable::Admin& admin : *admins) {
    answer.Add({{"id", static_cast<qint64>(admin.id)},
                {"name", AnswerText(admin.name)},
                {"network", AnswerText(admin.network)},
                {"address", AnswerText(admin.address)}});
    myApp.Loop().GiveWay();
  }
  return answer.Line();
}

QByteArray Commands::Settings(const Request&) {
  RowsAnswer answer;
  for (const auto& [name, value] : myApp.Settings().Values())
    answer.Add({{"name", AnswerText(name)}, {"value", AnswerText(value)}});
  return answer.Line();
}

NetworkRef Commands::NetworkNamed(const std::string& name) const {
  NetworkRef network = myListener.FindNetwork(name);
  if (network == nullptr) throw Refused("there is no network \"" + name + '"');
  return network;
}

std::shared_ptr<ClientSocket> Commands::UserOf(const Request& request) const {
  const std::string name = request.Text("user");
  std::shared_ptr<ClientSocket> user = myActions.FindUser(name);
  if (user == nullptr) {
    throw Refused("there is nobody \"" + name + "\"; expected is a user's name or ADDRESS:PORT");
  }
  return user;
}

void Commands::ExpectStored(bool isStored) const {
  if (isStored) return;
  throw Refused("done until the server ends, but not stored: database: " + myActions.StoreError());
}

void Commands::ExpectAllHaveNetworks(const Request& request) const {
  const std::vector<std::string> without = myActions.WithoutNetwork();
  if (without.empty() || request.Flag("force")) return;
  QJsonArray addresses;
  for (const std::string& address : without)
    addresses.append(DisplayText(address));
  throw Refused(
      "a message would end the server while somebody is connected who has not chosen a network; "
      "disconnect these, or wait, or use --force",
      {{"addresses", addresses}});
}

QByteArray Commands::AddNetwork(const Request& request) {
  const std::string name = request.Text("name");
  const std::string password = request.OptionalText("password").value_or("");
  const std::int32_t maxUsers =
      request.OptionalNumber("max-users", kFewestSeats, kMostSeats).value_or(kUsualSeats);
  if (myListener.FindNetwork(name)) throw Refused("there is a network \"" + name + "\" already");
  ExpectStored(myActions.AddNetwork(name, password, maxUsers, !request.Flag("disabled")));
  return DoneLine("Added the network " + name + '.');
}

QByteArray Commands::EditNetwork(const Request& request) {
  const NetworkRef network = NetworkNamed(request.Text("name"));
  const std::string password = request.OptionalText("password").value_or(network->Password);
  const std::int32_t maxUsers =
      request.OptionalNumber("max-users", kFewestSeats, kMostSeats).value_or(network->MaxUsers);
  const bool enables = request.Flag("enable");
  const bool disables = request.Flag("disable");
  if (enables && disables) throw Refused("expected is \"enable\" or \"disable\", not both");
  ExpectStored(myActions.ChangeNetwork(*network, password, maxUsers,
                                       (network->Enabled || enables) && !disables));
  return DoneLine("Changed the network " + network->NetworkName + '.');
}

QByteArray Commands::DeleteNetwork(const Request& request) {
  const NetworkRef network = NetworkNamed(request.Text("name"));
  ExpectAllHaveNetworks(request);
  ExpectStored(myActions.DeleteNetwork(network));
  return DoneLine("Deleted the network " + network->NetworkName + '.');
}

QByteArray Commands::DisconnectNetwork(const Request& request) {
  const NetworkRef network = NetworkNamed(request.Text("name"));
  myActions.DisconnectAll(network);
  return DoneLine("Sent away the users of " + network->NetworkName + '.');
}

QByteArray Commands::Kick(const Request& request) {
  const std::string reason = request.Text("reason");
  const std::shared_ptr<ClientSocket> user = UserOf(request);
  myActions.Kick(*user, reason);
  return DoneLine(StatusLine({"Kicked ", user->Username(), "."}));
}

QByteArray Commands::Ban(const Request& request) {
  const std::string reason = request.Text("reason");
  const std::shared_ptr<ClientSocket> user = UserOf(request);
  myActions.Ban(*user, reason);
  return DoneLine(StatusLine({"Banned ", user->RemoteAddress(), ", ", user->Username(), "."}));
}

QByteArray Commands::BanAddress(const Request& request) {
  const std::string address = request.Text("address");
  // Bans are looked up by the text, so it has to be the one that addresses have.
  const QString given = DisplayText(address);
  const QHostAddress parsed(given);
  if (parsed.protocol() != QHostAddress::IPv4Protocol || parsed.toString() != given) {
    throw Refused("expected is an IPv4 address such as 192.0.2.17, not " + address);
  }
  myActions.BanAddress(address, request.Text("reason"),
                       request.OptionalText("network").value_or(""));
  return DoneLine("Banned " + address + '.');
}

QByteArray Commands::Unban(const Request& request) {
  const std::string wanted = request.Text("ban");
  const auto bans = myActions.Bans();
  if (!bans) throw Refused("database: " + myActions.StoreError());
  std::vector<std::int64_t> ids;
  for (const BansTable::Ban& ban : *bans) {
    if (ban.address == wanted || std::to_string(ban.id) == wanted) ids.push_back(ban.id);
  }
  if (ids.empty()) throw Refused("no ban is stored of " + wanted);
  if (!myActions.LiftBans(ids)) throw Refused("database: " + myActions.StoreError());
  return DoneLine("Lifted " + std::to_string(ids.size()) + " ban(s).");
}

QByteArray Commands::Disconnect(const Request& request) {
  const std::shared_ptr<ClientSocket> user = UserOf(request);
  const std::string peer = user->PeerName();
  myActions.ForceDisconnect(*user);
  return DoneLine("Disconnected " + peer + '.');
}

QByteArray Commands::Grant(const Request& request) {
  const std::optional<std::string> network = request.OptionalText("network");
  const std::optional<std::string> address = request.OptionalText("address");
  if (network.has_value() != address.has_value()) {
    throw Refused("expected are both a network and an address, or neither for a user who is on");
  }
  std::string name = request.Text("user");
  bool isStored = false;
  if (network) {
    isStored = myActions.MakeAdmin(name, *address, NetworkNamed(*network)->NetworkName);
  } else {
    const std::shared_ptr<ClientSocket> user = UserOf(request);
    if (user->Username().empty()) throw Refused(name + " has not logged in");
    isStored = myActions.MakeAdmin(*user);
    name = user->Username();
  }
  if (!isStored) throw Refused("database: " + myActions.StoreError());
  return DoneLine(StatusLine({name, " is an administrator."}));
}

QByteArray Commands::Revoke(const Request& request) {
  const std::string wanted = request.Text("admin");
  const std::optional<std::string> network = request.OptionalText("network");
  const auto admins = myActions.Admins();
  if (!admins) throw Refused("database: " + myActions.StoreError());
  std::vector<std::int64_t> ids;
  for (const AdminsTable::Admin& admin : *admins) {
    const bool isWanted = SameText(admin.name, wanted) || std::to_string(admin.id) == wanted;
    if (isWanted && (!network || SameText(admin.network, *network))) ids.push_back(admin.id);
  }
  if (ids.empty()) throw Refused("nobody \"" + wanted + "\" is an administrator there");
  if (!myActions.DeleteAdmins(ids)) throw Refused("database: " + myActions.StoreError());
  return DoneLine("Took back " + std::to_string(ids.size()) + " grant(s).");
}

QByteArray Commands::Message(const Request& request) {
  const std::string text = request.Text("text");
  const std::optional<std::string> network = request.OptionalText("network");
  const std::string to = network ? NetworkNamed(*network)->NetworkName : "(All Networks)";
  ExpectAllHaveNetworks(request);
  myActions.Send(text, to);
  return DoneLine("Sent.");
}

QByteArray Commands::Set(const Request& request) {
  const std::string name = request.Text("name");
  const std::string value = request.OptionalText("value").value_or("");
  std::string known;
  bool isKnown = request.Flag("force");
  for (const auto& [other, otherValue] : myApp.Settings().Values()) {
    isKnown = isKnown || SameText(other, name);
    known += (known.empty() ? "" : ", ") + other;
  }
  if (!isKnown) throw Refused("no setting is called " + name + "; expected is one of: " + known);
  const bool isPort = SameText(name, "AttachedPort");
  if (isPort && (!IsNumeric(value) || NumberFromText(value) < 0 || NumberFromText(value) > 65535)) {
    throw Refused("expected is a port from 0 to 65535, not " + value);
  }
  myActions.ChangeSetting(name, value);
  return DoneLine("Set, for the next start.");
}

QByteArray Commands::MakeBackup(const Request& request) {
  const QString file = DisplayText(request.Text("file"));
  const QFileInfo place(file);
  if (myBackup) throw Refused("another backup is being made");
  if (!place.isAbsolute()) throw Refused("expected is a file by its whole path");
  const bool isOurs = place == QFileInfo(myApp.serverdb().File());
  for (const QString& other : {file, file + ".xml"}) {
    if (QFileInfo::exists(other) && (isOurs || !request.Flag("overwrite"))) {
      throw Refused("there is a file " + TextFromDisplay(other) + " already");
    }
  }
  myListener.Note(StatusLine({kActor, ": backup into ", TextFromDisplay(file)}));
  const auto done = [this, file, client = QPointer(myClient)](const std::string& error) {
    if (client)
      client->Answer(error.empty() ? DoneLine("Made " + TextFromDisplay(file) + '.')
                                   : RefusalLine(error));
    myBackup.release()->deleteLater();
  };
  myBackup = std::make_unique<Backup>(myApp.serverdb(), myApp.Settings().File().value_or(QString()),
                                      file, done);
  return {};
}

QByteArray Commands::Log(const Request& request) {
  const std::int32_t count =
      request.OptionalNumber("lines", 0, kMostLogLines).value_or(kUsualLogLines);
  QJsonArray lines;
  for (const std::string& line : myLog.Last(static_cast<std::size_t>(count)))
    lines.append(DisplayText(line));
  return DoneLine(QJsonObject{{"lines", lines}});
}

QByteArray Commands::Quit(const Request&) {
  // The answer goes first.
  QTimer::singleShot(0, qApp, [this] {
    const Operator::Acting acting(myActions, kActor);
    myActions.Quit();
  });
  return DoneLine("The server ends.");
}

}  // namespace corvane
