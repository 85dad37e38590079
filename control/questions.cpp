#include "control/questions.h"

#include <chrono>
#include <memory>
#include <utility>

#include <QFile>
#include <QHostAddress>
#include <QJsonArray>
#include <QNetworkInterface>
#include <QRegularExpression>

#include "app/operator.h"
#include "control/answers.h"
#include "control/lookup.h"
#include "control/metrics.h"
#include "control/process_resources.h"
#include "framework/dates.h"
#include "framework/text.h"
#include "net/poll_loop.h"
#include "server/client_socket.h"
#include "server/map_socket.h"
#include "storage/app_settings.h"
#include "updater/version.h"

namespace corvane {
namespace {

constexpr std::chrono::seconds kMaxPass{1};

QString Endpoint(const QString& address, const MapSocket& listener) {
  return address + ':' + QString::number(listener.Port());
}

// Each address and port that clients on this machine's networks can connect to.
QJsonArray Endpoints(const MapSocket& listener) {
  if (!listener.IsListening()) return {};
  if (listener.NetworkInterface)
    return {Endpoint(DisplayText(listener.NetworkInterface->IPAddress), listener)};
  QJsonArray endpoints;
  for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
    if (address.protocol() == QAbstractSocket::IPv4Protocol)
      endpoints.append(Endpoint(address.toString(), listener));
  }
  return endpoints;
}

// What is left in its two largest units: "3d 4h".
QString LeftText(qint64 seconds) {
  constexpr std::pair<qint64, char> kUnits[] = {{86'400, 'd'}, {3600, 'h'}, {60, 'm'}, {1, 's'}};
  QStringList parts;
  for (const auto& [size, unit] : kUnits) {
    const qint64 count = seconds / size;
    seconds %= size;
    if (count > 0 && parts.size() < 2) parts.push_back(QString::number(count) + QLatin1Char(unit));
  }
  return parts.join(QLatin1Char(' '));
}

// The row of a ban, with when it ends in local time and what is left.
QJsonObject WithEnd(QJsonObject row, const QDateTime& until, const QDateTime& now) {
  if (!until.isValid()) return row;
  row["ends"] = DisplayText(StoredDate(until));
  row["left"] = LeftText(now.secsTo(until));
  return row;
}

}  // namespace

Questions::Questions(Operator& op)
    : myOperator(op), myRates(op.Loop().Counts(), op.Loop().Passes()) {}

void Questions::Check() {
  if (!myOperator.Listener().IsListening()) throw Refused("the server does not listen");
  const auto longest = myRates.Now().longestPass;
  if (longest >= kMaxPass) {
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(longest).count();
    throw Refused("the server is slow: it was busy for " + std::to_string(milliseconds) +
                  " ms at a stretch");
  }
  if (!myOperator.TakesWrites()) RefuseForDatabase(myOperator);
}

QByteArray Questions::Status(const Request& request) {
  if (request.Flag("check")) {
    Check();
    return DoneLine("The server works.");
  }
  QJsonArray networks;
  for (const NetworkRef& network : myOperator.Networks())
    networks.append(NetworkRow(*network));
  const MapSocket& listener = myOperator.Listener();
  const auto& nic = listener.NetworkInterface;
  const Rates::Rate rate = myRates.Now();
  const auto bytes = [](std::uint64_t count) { return static_cast<qint64>(count); };
  return DoneLine(QJsonObject{
      {"version", DisplayText(RunningVersion().FullVersion())},
      {"up-since", myStart.toLocalTime().toString(Qt::ISODate)},
      {"rules", DisplayText(std::string(listener.Context.rules.name))},
      {"listening", listener.IsListening()},
      {"address", DisplayText(nic ? nic->IPAddress : "0.0.0.0")},
      {"port", listener.Port()},
      {"reachable-at", Endpoints(listener)},
      {"connections", static_cast<qint64>(listener.ActiveConnections()->size())},
      {"memory", bytes(ProcessMemory())},
      {"output-held", bytes(myOperator.Loop().Memory().output.InUse())},
      {"input-held", bytes(myOperator.Loop().Memory().input.InUse())},
      {"messages-per-second", qRound64(rate.messages)},
      {"received-per-second", qRound64(rate.received)},
      {"sent-per-second", qRound64(rate.sent)},
      {"networks", networks},
  });
}

QByteArray Questions::Metrics(const Request& request) {
  const std::string server = request.OptionalText("server").value_or("");
  const QString text = QString::fromStdString(MetricsText(myOperator, server)).trimmed();
  return DoneLine(QJsonObject{{"lines", QJsonArray::fromStringList(text.split('\n'))}});
}

QByteArray Questions::Users(const Request& request) {
  const std::optional<std::string> wanted = request.OptionalText("network");
  const NetworkRef network = wanted ? NetworkNamed(myOperator, *wanted) : nullptr;
  RowsAnswer answer;
  const auto connections = myOperator.Listener().ActiveConnections();
  for (const auto& connection : *connections) {
    const auto& user = static_cast<const ClientSocket&>(*connection);
    if (user.LoginState() == ClientSocket::State::LoggedIn &&
        (network == nullptr || user.myNetwork == network)) {
      answer.Add({{"name", AnswerText(user.Username())},
                  {"network", AnswerText(user.NetworkName())},
                  {"address", DisplayText(user.PeerName())}});
    }
    myOperator.Loop().GiveWay();
  }
  return answer.Line();
}

QByteArray Questions::Networks(const Request&) {
  RowsAnswer answer;
  for (const NetworkRef& network : myOperator.Networks())
    answer.Add(NetworkRow(*network));
  return answer.Line();
}

QByteArray Questions::Bans(const Request& request) {
  RowsAnswer answer;
  const QDateTime now = myOperator.Listener().Context.bans.Now();
  if (request.Flag("ranges")) {
    for (const BanRange& ban : myOperator.BannedRanges()) {
      answer.Add(WithEnd({{"id", static_cast<qint64>(ban.id)},
                          {"address", DisplayText(TextOf(ban.range))},
                          {"reason", AnswerText(ban.reason)}},
                         ban.until, now));
      myOperator.Loop().GiveWay();
    }
    return answer.Line();
  }
  const auto add = [&answer, &now](const Ban& ban) {
    answer.Add(WithEnd({{"id", static_cast<qint64>(ban.id)},
                        {"address", AnswerText(ban.address)},
                        {"by", AnswerText(ban.by)},
                        {"reason", AnswerText(ban.reason)},
                        {"date", DisplayText(StoredDate(ban.bandate))},
                        {"network", AnswerText(ban.network)}},
                       ban.until, now));
  };
  if (!myOperator.ForEachBan(add)) RefuseForDatabase(myOperator);
  return answer.Line();
}

QByteArray Questions::Admins(const Request&) {
  RowsAnswer answer;
  for (const AdminsTable::Admin& admin : RowsOrRefuse(myOperator.Admins(), myOperator)) {
    answer.Add({{"id", static_cast<qint64>(admin.id)},
                {"name", AnswerText(admin.name)},
                {"network", AnswerText(admin.network)},
                {"address", AnswerText(admin.address)}});
    myOperator.Loop().GiveWay();
  }
  return answer.Line();
}

QByteArray Questions::Settings(const Request&) {
  RowsAnswer answer;
  for (const auto& [name, value] : myOperator.Settings().Values())
    answer.Add({{"name", AnswerText(name)}, {"value", AnswerText(value)}});
  return answer.Line();
}

QByteArray Questions::Tunnel(const char* file, const Request& request) {
  const QString domain = DisplayText(request.OptionalText("domain").value_or("corvane.example"));
  static const QRegularExpression kHostName("\\A[0-9A-Za-z]([0-9A-Za-z.-]{0,251}[0-9A-Za-z])?\\z");
  if (!kHostName.match(domain).hasMatch())
    throw Misused("\"domain\" takes a host name such as corvane.example");
  QFile example(QLatin1String(":/tunnel/") + file);
  if (!example.open(QIODevice::ReadOnly)) throw Refused(TextFromDisplay(example.errorString()));
  QString text = QString::fromUtf8(example.readAll());
  // A client's own machine listens on the address that stands there.
  const MapSocket& listener = myOperator.Listener();
  const auto& nic = listener.NetworkInterface;
  if (!text.contains("client = yes")) {
    const QString address = nic ? DisplayText(nic->IPAddress) : "127.0.0.1";
    text.replace("127.0.0.1", address).replace(":12000", Endpoint("", listener));
  }
  text.replace("corvane.example", domain);
  return DoneLine(QJsonObject{{"lines", QJsonArray::fromStringList(text.trimmed().split('\n'))}});
}

}  // namespace corvane
