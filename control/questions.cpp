#include "control/questions.h"

#include <memory>
#include <utility>

#include <QJsonArray>

#include "app/operator.h"
#include "control/answers.h"
#include "control/lookup.h"
#include "framework/dates.h"
#include "framework/process_memory.h"
#include "framework/text.h"
#include "server/client_socket.h"
#include "server/map_socket.h"
#include "storage/app_settings.h"
#include "updater/version.h"

namespace corvane {

Questions::Questions(Operator& actions) : myActions(actions), myRates(actions.Loop()) {}

template <typename Row, typename Describe>
QByteArray Questions::TableOf(std::optional<std::vector<Row>> rows, Describe describe) {
  RowsAnswer answer;
  for (const Row& row : Given(std::move(rows), myActions)) {
    answer.Add(describe(row));
    myActions.Loop().GiveWay();
  }
  return answer.Line();
}

QByteArray Questions::Status(const Request&) {
  QJsonArray networks;
  for (const NetworkRef& network : myActions.Networks())
    networks.append(NetworkRow(*network));
  const MapSocket& listener = myActions.Listener();
  const auto& nic = listener.NetworkInterface;
  const Rates::Rate rate = myRates.Now();
  const auto bytes = [](std::uint64_t count) { return static_cast<qint64>(count); };
  return DoneLine(QJsonObject{
      {"version", DisplayText(RunningVersion().FullVersion())},
      {"up-since", myStart.toLocalTime().toString(Qt::ISODate)},
      {"rules", DisplayText(std::string(listener.RulesInForce().name))},
      {"listening", listener.IsListening()},
      {"address", DisplayText(nic ? nic->IPAddress : "0.0.0.0")},
      {"port", listener.Port()},
      {"connections", static_cast<qint64>(listener.ActiveConnections()->size())},
      {"memory", bytes(ProcessMemory())},
      {"output-held", bytes(myActions.Loop().Memory().output.InUse())},
      {"input-held", bytes(myActions.Loop().Memory().input.InUse())},
      {"messages-per-second", qRound64(rate.messages)},
      {"received-per-second", qRound64(rate.received)},
      {"sent-per-second", qRound64(rate.sent)},
      {"networks", networks},
  });
}

QByteArray Questions::Users(const Request& request) {
  const std::optional<std::string> wanted = request.OptionalText("network");
  const NetworkRef network = wanted ? NetworkNamed(myActions, *wanted) : nullptr;
  RowsAnswer answer;
  const auto connections = myActions.Listener().ActiveConnections();
  for (const auto& connection : *connections) {
    const auto& user = static_cast<const ClientSocket&>(*connection);
    if (user.LoginState() == ClientSocket::State::LoggedIn &&
        (network == nullptr || user.myNetwork == network)) {
      answer.Add({{"name", AnswerText(user.Username())},
                  {"network", AnswerText(user.NetworkName())},
                  {"address", DisplayText(user.PeerName())}});
    }
    myActions.Loop().GiveWay();
  }
  return answer.Line();
}

QByteArray Questions::Networks(const Request&) {
  RowsAnswer answer;
  for (const NetworkRef& network : myActions.Networks())
    answer.Add(NetworkRow(*network));
  return answer.Line();
}

QByteArray Questions::Bans(const Request&) {
  return TableOf(myActions.Bans(), [](const BansTable::Ban& ban) {
    return QJsonObject{{"id", static_cast<qint64>(ban.id)},
                       {"address", AnswerText(ban.address)},
                       {"by", AnswerText(ban.by)},
                       {"reason", AnswerText(ban.reason)},
                       {"date", DisplayText(StoredDate(ban.bandate))},
                       {"network", AnswerText(ban.network)}};
  });
}

QByteArray Questions::Admins(const Request&) {
  return TableOf(myActions.Admins(), [](const AdminsTable::Admin& admin) {
    return QJsonObject{{"id", static_cast<qint64>(admin.id)},
                       {"name", AnswerText(admin.name)},
                       {"network", AnswerText(admin.network)},
                       {"address", AnswerText(admin.address)}};
  });
}

QByteArray Questions::Settings(const Request&) {
  RowsAnswer answer;
  for (const auto& [name, value] : myActions.Settings().Values())
    answer.Add({{"name", AnswerText(name)}, {"value", AnswerText(value)}});
  return answer.Line();
}

}  // namespace corvane
