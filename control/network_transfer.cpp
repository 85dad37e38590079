#include "control/network_transfer.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>

#include "app/operator.h"
#include "control/answers.h"
#include "control/lookup.h"
#include "framework/dates.h"
#include "framework/ip_address.h"
#include "framework/text.h"
#include "net/poll_loop.h"
#include "server/map_socket.h"

namespace corvane {
namespace {

constexpr std::int32_t kFormat = 1;
constexpr qsizetype kMaxDocument = 1'000'000;  // bytes; the rest of the MiB is the request's

struct Rights {
  std::string name;
  std::string address;
};

struct ListedBan {
  std::string address;
  std::string reason;
  QDateTime until;
};

std::string AddressOf(const Request& entry) {
  const std::string text = entry.Text("address");
  if (const auto address = AddressFromText(text)) return *address;
  throw Misused('"' + text + "\" is not an address");
}

QDateTime EndIn(const Request& entry) {
  const auto text = entry.OptionalText("until");
  if (!text) return {};
  QDateTime until = QDateTime::fromString(DisplayText(*text), Qt::ISODate);
  if (!until.isValid()) throw Misused("\"until\" takes a time such as 2026-05-17T20:00:00Z");
  return until;
}

}  // namespace

QByteArray NetworkTransfer::Export(const Request& request) {
  const NetworkRef network = NetworkNamed(myOperator, request.Text("name"));
  const std::string& name = network->NetworkName;
  QJsonArray administrators;
  for (const AdminsTable::Admin& admin : RowsOrRefuse(myOperator.Admins(), myOperator)) {
    if (!SameText(admin.network, name)) continue;
    administrators.append(
        QJsonObject{{"name", DisplayText(admin.name)}, {"address", DisplayText(admin.address)}});
  }
  QJsonObject document{{"format", kFormat},
                       {"name", DisplayText(name)},
                       {"password", DisplayText(network->Password)},
                       {"max-users", network->MaxUsers},
                       {"enabled", network->Enabled},
                       {"administrators", administrators}};
  if (request.Flag("bans")) {
    QJsonArray bans;
    const auto add = [&](const corvane::Ban& ban) {
      if (!SameText(ban.network, name)) return;
      QJsonObject entry{{"address", DisplayText(ban.address)}, {"reason", AnswerText(ban.reason)}};
      if (ban.until.isValid()) entry["until"] = ban.until.toUTC().toString(Qt::ISODate);
      bans.append(entry);
    };
    if (!myOperator.ForEachBan(add)) RefuseForDatabase(myOperator);
    document["bans"] = bans;
  }
  if (Line(document).size() > kMaxDocument) {
    throw Refused("these are too many for one document; move the bans with \"bans export\"");
  }
  return DoneLine(QJsonObject{{"document", document}});
}

QByteArray NetworkTransfer::Import(const Request& request) {
  const Request document = request.Object("document");
  if (document.OptionalNumber("format", 0, INT32_MAX) != kFormat) {
    throw Misused("this is not a network of a version that this server knows");
  }
  const std::string name = document.Text("name");
  const std::string password = document.OptionalText("password").value_or("");
  const std::int32_t maxUsers =
      document.OptionalNumber("max-users", kMinSeats, kMaxSeats).value_or(kDefaultSeats);
  const bool isEnabled = document.Flag("enabled");
  std::vector<Rights> administrators;
  for (const Request& entry : document.Objects("administrators"))
    administrators.push_back({entry.Text("name"), AddressOf(entry)});
  std::vector<ListedBan> bans;
  for (const Request& entry : document.Objects("bans"))
    bans.push_back({AddressOf(entry), entry.OptionalText("reason").value_or(""), EndIn(entry)});
  if (myOperator.Listener().FindNetwork(name))
    throw Refused("there is already a network \"" + name + '"');

  // The network comes last: until then the import can be repeated.
  std::set<std::string> banned;
  const auto note = [&banned](const corvane::Ban& ban) { banned.insert(ban.address); };
  if (!myOperator.ForEachBan(note)) RefuseForDatabase(myOperator);
  bool areStored = true;
  for (const ListedBan& ban : bans) {
    if (!banned.insert(ban.address).second) continue;
    areStored = myOperator.BanAddress(ban.address, ban.reason, name, ban.until) && areStored;
    myOperator.Loop().GiveWay();
  }
  const auto known = RowsOrRefuse(myOperator.Admins(), myOperator);
  for (const Rights& rights : administrators) {
    const auto isThis = [&](const AdminsTable::Admin& admin) {
      return SameText(admin.name, rights.name) && SameText(admin.network, name) &&
             admin.address == rights.address;
    };
    if (std::ranges::any_of(known, isThis)) continue;
    if (!myOperator.MakeAdmin(rights.name, rights.address, name)) RefuseForDatabase(myOperator);
  }
  if (!myOperator.AddNetwork(name, password, maxUsers, isEnabled) || !areStored) {
    throw Refused("done until the server ends, but not stored: database: " +
                  myOperator.StoreError());
  }
  return DoneLine("Added the network " + name + " with " + std::to_string(administrators.size()) +
                  " administrator(s) and " + std::to_string(bans.size()) + " ban(s).");
}

}  // namespace corvane
