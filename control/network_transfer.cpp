#include "control/network_transfer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>

#include "app/operator.h"
#include "control/answers.h"
#include "control/lookup.h"
#include "framework/text.h"
#include "net/poll_loop.h"
#include "server/map_socket.h"

namespace corvane {
namespace {

constexpr std::int32_t kFormat = 1;
constexpr qsizetype kMaxDocument = 1'000'000;  // bytes; the rest of the MiB is the request's
constexpr std::size_t kMaxAdmins = 1000;
constexpr std::size_t kMaxBans = 20'000;
const std::string kLimits =
    "a document has at most 1000 administrators, 20000 bans and 1000000 bytes";

// As Request reads it.
QJsonValue TextValue(const std::string& text) {
  const QString shown = DisplayText(text);
  if (TextFromDisplay(shown) == text) return shown;
  return QJsonObject{{"latin-1", shown}};
}

// A text that may be empty, but not missing.
std::string GivenText(const Request& entry, const char* name) {
  if (auto text = entry.OptionalText(name)) return *std::move(text);
  throw Misused('"' + std::string(name) + "\" is missing");
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
    if (admin.network != name) continue;
    administrators.append(
        QJsonObject{{"name", TextValue(admin.name)}, {"address", TextValue(admin.address)}});
  }
  QJsonObject document{{"format", kFormat},
                       {"name", TextValue(name)},
                       {"password", TextValue(network->Password)},
                       {"max-users", std::max(network->MaxUsers, 0)},
                       {"enabled", network->Enabled},
                       {"administrators", administrators}};
  QJsonArray bans;
  qsizetype size = Line(document).size();
  const auto add = [&](const corvane::Ban& ban) {
    if (!SameText(ban.network, name) || size > kMaxDocument) return;
    QJsonObject entry{{"address", TextValue(ban.address)}, {"reason", TextValue(ban.reason)}};
    if (ban.until.isValid()) entry["until"] = ban.until.toUTC().toString(Qt::ISODate);
    size += Line(entry).size() + 1;
    bans.append(entry);
  };
  if (request.Flag("bans")) {
    if (!myOperator.ForEachBan(add)) RefuseForDatabase(myOperator);
    document["bans"] = bans;
  }
  const auto count = [](const QJsonArray& array) { return static_cast<std::size_t>(array.size()); };
  if (Line(document).size() > kMaxDocument || count(administrators) > kMaxAdmins ||
      count(bans) > kMaxBans) {
    throw Refused(kLimits + "; move bans with \"bans export\"");
  }
  return DoneLine(QJsonObject{{"document", document}});
}

QByteArray NetworkTransfer::Import(const Request& request,
                                   std::function<void(const QByteArray&)> answer) {
  const Request document = request.Object("document");
  if (document.OptionalNumber("format", 0, INT32_MAX) != kFormat) {
    throw Misused("this is not a network of a version that this server knows");
  }
  const auto network = std::make_shared<ServerNetworks>(
      document.Text("name"), GivenText(document, "password"),
      document.OptionalNumber("max-users", 0, INT32_MAX).value_or(kDefaultSeats),
      document.Flag("enabled", true));
  const std::string& name = network->NetworkName;
  const std::vector<Request> listedAdmins = document.Objects("administrators");
  const std::vector<Request> listedBans = document.Objects("bans");
  if (listedAdmins.size() > kMaxAdmins || listedBans.size() > kMaxBans) throw Misused(kLimits);
  if (myOperator.Listener().FindNetwork(name))
    throw Refused("there is already a network \"" + name + '"');

  std::set<std::pair<std::string, std::string>> known;
  for (const AdminsTable::Admin& admin : RowsOrRefuse(myOperator.Admins(), myOperator)) {
    if (admin.network == name) known.emplace(admin.name, admin.address);
  }
  std::vector<AdminsTable::Admin> admins;
  for (const Request& entry : listedAdmins) {
    const auto [grant, isNew] =
        known.emplace(GivenText(entry, "name"), GivenText(entry, "address"));
    if (isNew) admins.push_back({0, grant->first, name, grant->second});
  }
  std::vector<corvane::Ban> bans;
  const QDateTime now = myOperator.Listener().Context.bans.Now();
  for (const Request& entry : listedBans) {
    corvane::Ban ban;
    ban.address = GivenText(entry, "address");
    ban.reason = entry.OptionalText("reason").value_or("");
    ban.network = name;
    ban.until = EndIn(entry);
    if (!ban.HasEnded(now)) bans.push_back(std::move(ban));
    myOperator.Loop().GiveWay();
  }
  const auto done = [answer = std::move(answer), name, added = admins.size(),
                     skipped = listedAdmins.size() - admins.size(), listed = listedBans.size()](
                        const std::string& error, const BanImport& import) {
    if (!error.empty()) return answer(RefusalLine("nothing is stored: database: " + error));
    const auto count = static_cast<std::size_t>(import.AddressCount());
    answer(DoneLine("Added the network " + name + " with " + std::to_string(added) +
                    " administrator(s) and " + std::to_string(count) + " ban(s); skipped " +
                    std::to_string(skipped) + " and " + std::to_string(listed - count) +
                    " that are known or have ended."));
  };
  if (!myOperator.ImportNetwork(network, admins, std::move(bans), done)) {
    throw Refused("another list is being stored; nothing of this one is stored");
  }
  return {};
}

}  // namespace corvane
