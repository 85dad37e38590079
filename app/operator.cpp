#include "app/operator.h"

#include <algorithm>

#include "app/app.h"
#include "framework/dates.h"
#include "framework/ip_address.h"
#include "framework/status_line.h"
#include "framework/text.h"
#include "server/client_socket.h"
#include "server/map_socket.h"

namespace corvane {
namespace {

using Kind = ServerEvent::Kind;

// The issuer of bans.
const std::string kName = "Server Admin";

std::string Numbers(const std::vector<std::int64_t>& ids) {
  std::string text;
  for (const std::int64_t id : ids)
    text += (text.empty() ? "" : ", ") + std::to_string(id);
  return text;
}

std::string UntilText(const QDateTime& until) {
  return until.isValid() ? " until " + StoredUtc(until) + " UTC" : "";
}

void SetTerms(ServerNetworks& network, const std::string& password, std::int32_t maxUsers,
              bool enabled) {
  network.Enabled = enabled;
  network.MaxUsers = maxUsers;
  network.Password = password;
}

// In the form of TCPSocket::PeerName.
bool IsAddressAndPort(std::string_view text) {
  const auto colon = std::min(text.rfind(':'), text.size());
  std::string_view address = text.substr(0, colon);
  if (address.starts_with('[') && address.ends_with(']')) {
    address = address.substr(1, address.size() - 2);
  }
  return AddressFromText(address) && colon + 1 < text.size() &&
         text.find_first_not_of("0123456789", colon + 1) == std::string_view::npos;
}

bool HaveSameTerms(const ServerNetworks& one, const ServerNetworks& other) {
  return one.Enabled == other.Enabled && one.MaxUsers == other.MaxUsers &&
         one.Password == other.Password;
}

}  // namespace

Operator::Operator(App& app, MapSocket& listener)
    : myApp(app), myListener(listener), myEnds(listener.Context.bans.EndsDue.Connect([this] {
        EndBans();
        EndRanges();
      })) {}

void Operator::LogAction(StatusParts what) {
  Log().WriteAudit(myActor + ": " + LogLine(what));
}

const DatabaseConnection& Operator::Database() const {
  return myApp.serverdb();
}

ServerEvents& Operator::Events() const {
  return myListener.Context.events;
}

bool Operator::TakesWrites() {
  return myApp.serverdb().TakesWrites();
}

AppSettings& Operator::Settings() const {
  return myApp.Settings();
}

PollLoop& Operator::Loop() const {
  return myApp.Loop();
}

ServerLog& Operator::Log() const {
  return myApp.Log();
}

MessageBox::Answer Operator::ShowMessage(const MessageBox& box) const {
  return myApp.ShowMessage(box);
}

const std::vector<NetworkRef>& Operator::Networks() const {
  return myListener.Networks;
}

void Operator::Raise(Kind kind, const ServerNetworks& network) const {
  Events().Raise({.kind = kind, .network = network.NetworkName});
}

void Operator::AddToList(const NetworkRef& network) {
  myListener.Networks.push_back(network);
  NetworkAdded(network);
  Raise(Kind::NetworkAdded, *network);
}

bool Operator::AddNetwork(const std::string& name, const std::string& password,
                          std::int32_t maxUsers, bool enabled) {
  LogAction({"add network ", Quoted(name)});
  AddToList(std::make_shared<ServerNetworks>(name, password, maxUsers, enabled));
  return myApp.NetworkRecords().Add(name, password, maxUsers, enabled);
}

bool Operator::ChangeNetwork(ServerNetworks& network, const std::string& password,
                             std::int32_t maxUsers, bool enabled) {
  LogAction({"change network ", Quoted(network.NetworkName)});
  SetTerms(network, password, maxUsers, enabled);
  Raise(Kind::NetworkChanged, network);
  return myApp.NetworkRecords().Change(network.NetworkName, password, maxUsers, enabled);
}

bool Operator::DeleteNetwork(const NetworkRef& network) {
  LogAction({"delete network ", Quoted(network->NetworkName)});
  myListener.RemoveNetwork(network);
  const bool isStored = myApp.NetworkRecords().Delete(network->NetworkName);
  NetworkRemoved(network);
  Raise(Kind::NetworkRemoved, *network);
  return isStored;
}

std::optional<Operator::NetworkChanges> Operator::CompareNetworks() {
  const auto stored = myApp.ReadNetworks();
  if (!stored) return std::nullopt;
  NetworkChanges changes;
  std::vector<NetworkRef> left = Networks();
  for (const NetworkRef& network : *stored) {
    const auto listed = std::ranges::find(left, network->NetworkName, [](const NetworkRef& other) {
      return std::string_view(other->NetworkName);
    });
    if (listed == left.end()) {
      changes.added.push_back(network);
      continue;
    }
    if (!HaveSameTerms(**listed, *network)) changes.changed.emplace_back(*listed, network);
    left.erase(listed);
  }
  changes.removed = std::move(left);
  return changes;
}

void Operator::ApplyChanges(const NetworkChanges& changes) {
  LogAction({"reload networks"});
  for (const NetworkRef& network : changes.removed) {
    LogAction({"reload: removed network ", Quoted(network->NetworkName)});
    myListener.RemoveNetwork(network);
    NetworkRemoved(network);
    Raise(Kind::NetworkRemoved, *network);
  }
  for (const auto& [network, stored] : changes.changed) {
    LogAction({"reload: changed network ", Quoted(network->NetworkName)});
    SetTerms(*network, stored->Password, stored->MaxUsers, stored->Enabled);
    Raise(Kind::NetworkChanged, *network);
  }
  for (const NetworkRef& network : changes.added) {
    LogAction({"reload: added network ", Quoted(network->NetworkName)});
    AddToList(network);
  }
}

std::string Operator::StoreError() const {
  return myApp.serverdb().ErrorMessage();
}

void Operator::DisconnectAll(const NetworkRef& network) {
  LogAction({"disconnect network ", Quoted(network->NetworkName)});
  myListener.DisconnectAllClientsOnNetwork(network);
}

std::shared_ptr<ClientSocket> Operator::FindUser(const std::string& user, bool isName) const {
  const bool isPeer = !isName && IsAddressAndPort(user);
  const std::string folded = FoldText(user);
  const auto connections = myListener.ActiveConnections();
  for (const auto& connection : *connections) {
    auto session = std::static_pointer_cast<ClientSocket>(connection);
    const bool isUser = isPeer ? session->PeerName() == user
                               : session->LoginState() == ClientSocket::State::LoggedIn &&
                                     session->FoldedUsername() == folded;
    if (isUser) return session;
  }
  return nullptr;
}

void Operator::Kick(ClientSocket& user, const std::string& reason) {
  LogAction({"kick ", user.PeerName(), " ", Quoted(user.Username()), ": ", reason});
  myListener.Kick(user, reason);
}

bool Operator::Ban(ClientSocket& user, const std::string& reason, const QDateTime& until) {
  LogAction(
      {"ban ", user.PeerName(), " ", Quoted(user.Username()), UntilText(until), ": ", reason});
  return myListener.Ban(user.RemoteAddress(), kName, reason, user.NetworkName(), &user, until);
}

bool Operator::BanAddress(const std::string& address, const std::string& reason,
                          const std::string& networkName, const QDateTime& until) {
  LogAction({"ban address ", address, UntilText(until), ": ", reason});
  return myListener.Ban(address, kName, reason, networkName, nullptr, until);
}

bool Operator::BanRange(const AddressRange& range, const std::string& reason,
                        const QDateTime& until) {
  LogAction({"ban range ", TextOf(range), UntilText(until), ": ", reason});
  return myListener.BanRange(range, reason, until);
}

bool Operator::ImportBans(BanImport::List list, const std::string& reason, const QDateTime& until,
                          Bans::ImportDone done) {
  const std::size_t count = list.ranges.size() + list.addresses.size();
  LogAction({"import ", std::to_string(count), " bans", UntilText(until), ": ", reason});
  return myListener.Context.bans.Import(std::move(list), kName, reason, until, std::move(done));
}

bool Operator::ImportNetwork(const NetworkRef& network,
                             const std::vector<AdminsTable::Admin>& admins,
                             std::vector<corvane::Ban> bans, Bans::ImportDone done) {
  LogAction({"import network ", Quoted(network->NetworkName), " with ",
             std::to_string(admins.size()), " administrators and ", std::to_string(bans.size()),
             " bans"});
  BanImport::List list;
  list.bans = std::move(bans);
  for (const AdminsTable::Admin& admin : admins) {
    LogGrant(admin);
    list.rows.push_back(AdminsTable::Row(admin));
  }
  list.rows.push_back(NetworksTable::Row(network->NetworkName, network->Password, network->MaxUsers,
                                         network->Enabled));
  const auto addIt = [this, network, done = std::move(done)](const std::string& error,
                                                             BanImport& import) {
    // A reload may have found it meanwhile, or another command made it.
    const NetworkRef listed = myListener.FindNetwork(network->NetworkName);
    if (error.empty() && listed == nullptr) AddToList(network);
    if (error.empty() && listed != nullptr) {
      SetTerms(*listed, network->Password, network->MaxUsers, network->Enabled);
      Raise(Kind::NetworkChanged, *listed);
    }
    done(error, import);
  };
  return myListener.Context.bans.Import(std::move(list), kName, {}, {}, addIt);
}

std::vector<std::string> Operator::SessionsIn(const AddressRange& range) const {
  std::vector<std::string> peers;
  for (const auto& session : myListener.SessionsIn(range))
    peers.push_back(session->PeerName());
  return peers;
}

void Operator::RaiseLifted(const std::string& what) const {
  Events().Raise({.kind = Kind::Lifted, .by = myActor, .text = what});
}

void Operator::EndRanges() {
  Bans& bans = myListener.Context.bans;
  std::vector<std::int64_t> ids;
  const std::vector<corvane::BanRange> ended = bans.EndedRanges();
  ids.reserve(ended.size());
  for (const corvane::BanRange& ban : ended)
    ids.push_back(ban.id);
  if (ids.empty() || !bans.LiftRanges(ids)) return;
  const Acting acting(*this, "clock");
  for (const corvane::BanRange& ban : ended) {
    LogAction(
        {"lift range ", std::to_string(ban.id), ", ", TextOf(ban.range), ", which has ended"});
    myListener.CallStatusMessage({TextOf(ban.range), " Unbanned: the ban has ended"});
    RaiseLifted(TextOf(ban.range));
  }
}

void Operator::EndBans() {
  const Acting acting(*this, "clock");
  Bans& bans = myListener.Context.bans;
  const auto ended = bans.Ended();
  if (!ended || ended->empty()) return;
  std::vector<std::int64_t> ids;
  for (const corvane::Ban& ban : *ended)
    ids.push_back(ban.id);
  // Logged afterwards, unlike other actions: a ban that cannot be lifted yet would be logged again.
  if (!bans.Lift(ids)) return;
  for (const corvane::Ban& ban : *ended) {
    LogAction({"lift ban ", std::to_string(ban.id), " of ", ban.address, ", which has ended"});
    myListener.CallStatusMessage({Quoted(ban.address), " Unbanned: the ban has ended"});
    RaiseLifted(ban.address);
  }
}

void Operator::ForceDisconnect(ClientSocket& user) {
  LogAction({"disconnect ", user.PeerName(), " ", Quoted(user.Username())});
  myListener.CallStatusMessage({"Admin Force Kicked ", Quoted(user.Username())});
  user.Close();
}

void Operator::LogGrant(const AdminsTable::Admin& admin) {
  LogAction({"make administrator ", Quoted(admin.name), " of ", Quoted(admin.network), ", ",
             admin.address});
}

bool Operator::MakeAdmin(const std::string& name, const std::string& address,
                         const std::string& networkName) {
  LogGrant({0, name, networkName, address});
  return myListener.Context.admins.Add(name, address, networkName);
}

void Operator::Send(const std::string& text, const std::string& networkName) {
  if (text.empty()) return;
  LogAction({"message to ", Quoted(networkName), ": ", text});
  myListener.BroadcastMessage(text, networkName);
}

std::vector<std::string> Operator::WithoutNetwork() const {
  std::vector<std::string> found;
  if (!myListener.Context.rules.isMessageFatalWithoutNetwork) return found;
  const auto connections = myListener.ActiveConnections();
  for (const auto& connection : *connections) {
    const auto& session = static_cast<const ClientSocket&>(*connection);
    if (session.myNetwork == nullptr) found.push_back(session.PeerName());
  }
  return found;
}

bool Operator::ForEachBan(const std::function<void(const corvane::Ban&)>& act) {
  for (std::int64_t place = Bans::kBegin; place != Bans::kEnd;) {
    const auto portion = myListener.Context.bans.Portion(place);
    if (!portion) return false;
    for (const auto& ban : *portion) {
      act(ban);
      myApp.Loop().GiveWay();
    }
  }
  return true;
}

std::optional<std::vector<corvane::Ban>> Operator::BansOf(const std::string& address) {
  return myListener.Context.bans.Of(address);
}

std::optional<corvane::Ban> Operator::FindBan(std::int64_t number) {
  return myListener.Context.bans.Find(number);
}

bool Operator::LiftBans(const std::vector<std::int64_t>& ids) {
  LogAction({"lift bans ", Numbers(ids)});
  if (!myListener.Context.bans.Lift(ids)) return false;
  RaiseLifted("bans " + Numbers(ids));
  return true;
}

std::vector<corvane::BanRange> Operator::BannedRanges() {
  Bans& bans = myListener.Context.bans;
  std::vector<corvane::BanRange> ranges = bans.Ranges();
  std::erase_if(ranges, [now = bans.Now()](const auto& range) { return range.HasEnded(now); });
  return ranges;
}

bool Operator::LiftRanges(const std::vector<std::int64_t>& ids) {
  LogAction({"lift ranges ", Numbers(ids)});
  if (!myListener.Context.bans.LiftRanges(ids)) return false;
  RaiseLifted("ranges " + Numbers(ids));
  return true;
}

std::optional<std::vector<AdminsTable::Admin>> Operator::Admins() {
  return myListener.Context.admins.All();
}

bool Operator::DeleteAdmins(const std::vector<std::int64_t>& ids) {
  LogAction({"delete administrators ", Numbers(ids)});
  return myListener.Context.admins.Delete(ids);
}

bool Operator::ChangeSetting(const std::string& name, const std::string& value) {
  LogAction({"set ", Quoted(name), " to ", value});
  if (myApp.Settings().SetValue(name, value)) return true;
  LogAction({Quoted(name), " was not saved: ", myApp.Settings().SaveError()});
  return false;
}

void Operator::Quit() {
  if (!myApp.IsQuitting()) LogAction({"quit"});
  myApp.Quit();
}

void Operator::QuitFor(const std::string& actor) {
  const Acting acting(*this, actor);
  Quit();
}

}  // namespace corvane
