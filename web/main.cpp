// The map in a browser: "corvane-web --config FILE". It also checks its configuration and makes and
// revokes links.

#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QTimer>

#include "framework/dates.h"
#include "framework/text.h"
#include "platform/caller.h"
#include "platform/prepare_process.h"
#include "platform/process_signals.h"
#include "platform/qt_noise.h"
#include "platform/standard_error.h"
#include "updater/version.h"
#include "web/config.h"
#include "web/http_server.h"
#include "web/links.h"
#include "web/network_feed.h"
#include "web/site_builder.h"

namespace {

using namespace corvane;
using namespace corvane::web;

enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2 };

constexpr std::chrono::milliseconds kWake{100};
constexpr std::chrono::milliseconds kLookAtLinks{500};

int Complain(ExitCode code, const QString& text) {
  WriteErrorLine("corvane-web: " + TextFromDisplay(text));
  return code;
}

void Print(const QString& line) {
  std::printf("%s\n", qUtf8Printable(line));
}

int Serve(const Config& config) {
  const auto report = [](const QString& line) { WriteErrorLine(TextFromDisplay(line)); };
  std::map<QString, Site> sites;
  std::vector<std::unique_ptr<NetworkFeed>> feeds;
  QString error;
  for (const WebNetwork& network : config.networks) {
    const auto site = BuildSite(network, config.data, report, error);
    if (!site) return Complain(kFailed, error);
    sites.emplace(network.id, *site);
    feeds.push_back(std::make_unique<NetworkFeed>(network, *site->channel));
    feeds.back()->Reported = report;
  }
  Assets assets = LoadAssets(error);
  if (!error.isEmpty()) return Complain(kFailed, error);
  HttpServer server(std::move(sites), std::move(assets));
  Links links(config.data);
  QString fault;  // that was reported
  const auto readLinks = [&] {
    const auto all = links.All();
    server.SetLinks(all.value_or(std::vector<Link>()));
    const QString now = all ? QString() : links.Error();
    if (now != std::exchange(fault, now) && !now.isEmpty()) report(now);
  };
  readLinks();
  const QString where = config.Listening();
  error = server.Start(config.address, config.port);
  if (!error.isEmpty()) return Complain(kFailed, "cannot listen on " + where + ": " + error);
  report("listening on " + where);
  for (const auto& feed : feeds)
    feed->Start();
  QTimer wake;
  wake.callOnTimeout([&] { server.Wake(); });
  wake.start(kWake);
  QTimer look;
  look.callOnTimeout(readLinks);
  look.start(kLookAtLinks);
  const ProcessSignals signals([] { QCoreApplication::quit(); });
  return QCoreApplication::exec();
}

int AddLink(const Config& config, const QString& id, const QCommandLineParser& parser) {
  const bool isKnown =
      std::ranges::any_of(config.networks, [&](const auto& network) { return network.id == id; });
  if (!isKnown) return Complain(kUsage, "there is no network \"" + id + "\" in the configuration");
  QDateTime until;
  if (parser.isSet("for")) {
    const auto seconds = SecondsFromText(TextFromDisplay(parser.value("for")));
    if (!seconds) return Complain(kUsage, "--for takes a time such as 90s, 30m, 12h, 2d or 1w");
    until = QDateTime::currentDateTimeUtc().addSecs(*seconds);
  }
  Links links(config.data);
  const auto token = links.Add(id, parser.value("label"), until);
  if (!token) return Complain(kFailed, links.Error());
  Print(config.publicUrl + '/' + *token + '/');
  return kDone;
}

int ListLinks(const Config& config) {
  Links links(config.data);
  const auto all = links.All();
  if (!all) return Complain(kFailed, links.Error());
  for (const Link& link : *all) {
    const std::string end = link.until.isValid() ? StoredDate(link.until) : "never";
    Print(QStringLiteral("%1\t%2\t%3\t%4")
              .arg(QString::number(link.number), link.network, DisplayText(end), link.label));
  }
  return kDone;
}

int RevokeLinks(const Config& config, const QString& labelOrNumber) {
  Links links(config.data);
  const auto count = links.Revoke(labelOrNumber);
  if (!count) return Complain(kFailed, links.Error());
  if (*count == 0) return Complain(kFailed, "there is no link \"" + labelOrNumber + '"');
  Print(QStringLiteral("Revoked %1 link(s).").arg(*count));
  return kDone;
}

}  // namespace

int main(int argc, char** argv) {
  PrepareProcess();
  DropQtNoise();
  QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("corvane-web"));
  QCoreApplication::setApplicationVersion(DisplayText(RunningVersion().FullVersion()));
  QCommandLineParser parser;
  parser.setApplicationDescription("Shows networks in a browser, to those who have a link.");
  parser.addOptions({{"config", "The configuration.", "FILE"},
                     {"for", "links add: when the link ends, such as 12h. Default: never.", "TIME"},
                     {"label", "links add: a name to revoke it by.", "TEXT"}});
  parser.addPositionalArgument(
      "command",
      "check | links add ID | links list | links revoke LABEL|NUMBER; without one, serve.",
      "[command]");
  if (const auto answer = AnswerTo(QCoreApplication::arguments(), parser, 3)) {
    AnswerOnConsole(*answer);
    return answer->exitCode;
  }
  if (!parser.isSet("config")) return Complain(kUsage, "--config FILE is missing");
  const ConfigResult result = ReadConfig(parser.value("config"));
  if (!result.config) return Complain(kFailed, result.error);
  const Config& config = *result.config;
  const QStringList words = parser.positionalArguments();
  if (words == QStringList{"check"}) {
    Print("The configuration is right.");
    return kDone;
  }
  if (!QDir().mkpath(config.data))
    return Complain(kFailed, config.data + ": the folder cannot be made");
  if (words.isEmpty()) return Serve(config);
  if (words.size() == 3 && words.first(2) == QStringList{"links", "add"})
    return AddLink(config, words[2], parser);
  if (words == QStringList{"links", "list"}) return ListLinks(config);
  // An empty word, such as that of an unset variable, is the label of links that have none.
  if (words.size() == 3 && words.first(2) == QStringList{"links", "revoke"} && !words[2].isEmpty())
    return RevokeLinks(config, words[2]);
  return Complain(kUsage, "no such command: " + words.join(' '));
}
