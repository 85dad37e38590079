#include "control/commands.h"

#include <memory>

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>

#include "app/operator.h"
#include "app/server_log.h"
#include "control/answers.h"
#include "framework/status_line.h"
#include "framework/text.h"
#include "platform/standard_error.h"
#include "storage/app_settings.h"

namespace corvane {
namespace {

constexpr std::int32_t kMaxLogLines = 10'000;
constexpr std::int32_t kDefaultLogLines = 20;
// Actors in the log.
const std::string kActor = "corvanectl";
const std::string kSignal = "SIGHUP";

}  // namespace

Commands::Commands(Operator& op)
    : myOperator(op),
      myLog(op.Log()),
      myQuestions(op),
      myActions(op),
      myBanActions(op),
      myNetworkTransfer(op),
      myEntries{
          {"status", std::bind_front(&Questions::Status, &myQuestions)},
          {"metrics", std::bind_front(&Questions::Metrics, &myQuestions)},
          {"users", std::bind_front(&Questions::Users, &myQuestions)},
          {"networks", std::bind_front(&Questions::Networks, &myQuestions)},
          {"bans", std::bind_front(&Questions::Bans, &myQuestions)},
          {"admins", std::bind_front(&Questions::Admins, &myQuestions)},
          {"settings", std::bind_front(&Questions::Settings, &myQuestions)},
          {"tunnel stunnel", std::bind_front(&Questions::Tunnel, &myQuestions, "stunnel.conf")},
          {"tunnel haproxy", std::bind_front(&Questions::Tunnel, &myQuestions, "haproxy.cfg")},
          {"tunnel client",
           std::bind_front(&Questions::Tunnel, &myQuestions, "stunnel-client.conf")},
          {"network add", std::bind_front(&Actions::AddNetwork, &myActions)},
          {"network edit", std::bind_front(&Actions::EditNetwork, &myActions)},
          {"network delete", std::bind_front(&Actions::DeleteNetwork, &myActions)},
          {"network disconnect", std::bind_front(&Actions::DisconnectNetwork, &myActions)},
          {"network export", std::bind_front(&NetworkTransfer::Export, &myNetworkTransfer)},
          {"network import",
           [this](const Request& request) {
             return myNetworkTransfer.Import(request, LaterAnswer());
           }},
          {"kick", std::bind_front(&Actions::Kick, &myActions)},
          {"ban", std::bind_front(&Actions::Ban, &myActions)},
          {"ban-address", std::bind_front(&Actions::BanAddress, &myActions)},
          {"ban-range", std::bind_front(&BanActions::BanRange, &myBanActions)},
          {"unban-range", std::bind_front(&BanActions::UnbanRange, &myBanActions)},
          {"bans import",
           [this](const Request& request) { return myBanActions.Import(request, LaterAnswer()); }},
          {"bans export", std::bind_front(&BanActions::Export, &myBanActions)},
          {"unban", std::bind_front(&Actions::Unban, &myActions)},
          {"disconnect", std::bind_front(&Actions::Disconnect, &myActions)},
          {"grant", std::bind_front(&Actions::Grant, &myActions)},
          {"revoke", std::bind_front(&Actions::Revoke, &myActions)},
          {"message", std::bind_front(&Actions::Message, &myActions)},
          {"set", std::bind_front(&Actions::Set, &myActions)},
          {"reload", std::bind_front(&Commands::Reload, this)},
          {"backup", std::bind_front(&Commands::MakeBackup, this)},
          {"events", std::bind_front(&Commands::Events, this)},
          {"log", std::bind_front(&Commands::Log, this)},
          {"quit", std::bind_front(&Commands::Quit, this)},
      },
      myEvents(op.Events()),
      myLines(myLog.Written.Connect([this](const std::string& line) { SendToFollowers(line); })) {}

void Commands::Run(ControlConnection& client, const QByteArray& line) {
  const Operator::Acting acting(myOperator, kActor);
  try {
    const Request request(line);
    myClient = &client;
    const QByteArray answer = Execute(request);
    if (!answer.isEmpty()) client.Answer(answer);
  } catch (const Refused& refused) {
    client.Answer(RefusalLine(refused.what(), refused.fields));
  }
}

void Commands::ReloadForSignal() {
  const Operator::Acting acting(myOperator, kSignal);
  try {
    Reload(Request("{}"));
  } catch (const Refused& refused) {
    std::string why = kSignal + ": not reloaded: " + refused.what();
    const QJsonArray addresses = refused.fields["addresses"].toArray();
    if (!addresses.isEmpty()) why += " with corvanectl reload:";
    for (const auto& address : addresses)
      why += ' ' + TextFromDisplay(address.toString());
    WriteErrorLine(why);
    myLog.Write(StatusLine({why}));
  }
}

void Commands::SendToFollowers(const std::string& text) {
  std::erase(myFollowers, nullptr);
  if (myFollowers.empty()) return;
  const QByteArray line = Line({{"line", DisplayText(text)}});
  for (const auto& follower : myFollowers)
    follower->SendFollowed(line);
}

std::function<void(const QByteArray&)> Commands::LaterAnswer() {
  return [client = QPointer(myClient)](const QByteArray& answer) {
    if (client) client->Answer(answer);
  };
}

QByteArray Commands::Execute(const Request& request) {
  const std::string command = request.Text("command");
  std::string known;
  for (const Entry& entry : myEntries) {
    if (command == entry.name) return entry.run(request);
    known += known.empty() ? "" : ", ";
    known += entry.name;
  }
  throw Misused("no such command; expected one of: " + known);
}

QByteArray Commands::MakeBackup(const Request& request) {
  const QString file = DisplayText(request.Text("file"));
  if (myBackup) throw Refused("another backup is being made");
  if (!QFileInfo(file).isAbsolute()) throw Misused("\"file\" takes an absolute path");
  const Backup::Places places{myOperator.Settings().File().value_or(QString()),
                              DisplayText(myOperator.Settings().GetValue("LocationDatabase", "")),
                              file, request.Flag("overwrite")};
  const std::string whyNot = Backup::WhyNot(myOperator.Database(), places);
  if (!whyNot.empty()) throw Refused(whyNot);
  myOperator.LogAction({"backup into ", TextFromDisplay(file)});
  const auto done = [this, file, answer = LaterAnswer()](const std::string& error) {
    answer(error.empty() ? DoneLine("Made " + TextFromDisplay(file) + '.') : RefusalLine(error));
    myBackup.release()->deleteLater();
  };
  myBackup = std::make_unique<Backup>(myOperator.Database(), places, done);
  return {};
}

QByteArray Commands::Log(const Request& request) {
  const std::int32_t count =
      request.OptionalNumber("lines", 0, kMaxLogLines).value_or(kDefaultLogLines);
  QJsonArray lines;
  for (const std::string& line : myLog.Last(static_cast<std::size_t>(count)))
    lines.append(DisplayText(line));
  if (request.Flag("follow")) {
    myClient->StartFollowing();
    std::erase(myFollowers, myClient);
    myFollowers.emplace_back(myClient);
  }
  return DoneLine(QJsonObject{{"lines", lines}});
}

QByteArray Commands::Events(const Request& request) {
  if (!request.Flag("follow")) throw Misused("events are shown as they happen: use --follow");
  myEvents.Follow(*myClient, request.OptionalText("types"));
  myClient->StartFollowing();
  return DoneLine(QJsonObject{{"lines", QJsonArray()}});
}

QByteArray Commands::Reload(const Request& request) {
  // First, so that the new files have the lines about the reload.
  myLog.Reopen();
  return myActions.Reload(request);
}

QByteArray Commands::Quit(const Request&) {
  // Sends the answer first.
  QTimer::singleShot(0, qApp, [this] { myOperator.QuitFor(kActor); });
  return DoneLine("The server is shutting down.");
}

}  // namespace corvane
