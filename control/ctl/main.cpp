#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include "control/ctl/command_line.h"
#include "control/ctl/console_text.h"
#include "control/ctl/import_file.h"
#include "control/ctl/password_prompt.h"
#include "control/ctl/printing.h"
#include "control/ctl/reach.h"
#include "control/ctl/server_link.h"
#include "platform/folders.h"
#include "platform/prepare_process.h"

using namespace corvane;
using namespace corvane::ctl;

namespace {

enum ExitCode { kDone = 0, kRefused = 1, kUsage = 2, kNoServer = 3, kNotShown = 4 };

// How long servers may take to accept and to answer, in ms. A check takes 5 s at most.
constexpr int kPatience = 30'000;
constexpr int kCheckPatience = 4'500;
constexpr int kCheckAccept = 1'000;
// Of a network's document: of the file, which may be indented, and without blanks.
constexpr qint64 kMaxFile = qint64{4} << 20;
constexpr qint64 kMaxDocument = 1'000'000;

int Complain(ExitCode code, const QString& text) {
  std::fprintf(stderr, "corvanectl: %s\n", qUtf8Printable(text.trimmed()));
  return code;
}

// The first line of the file, without its line end.
QString PasswordFrom(const QString& name) {
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly)) throw UsageError(name + ": " + file.errorString());
  QString line = QString::fromUtf8(file.readLine());
  while (line.endsWith('\n') || line.endsWith('\r'))
    line.chop(1);
  return line;
}

void AddPassword(CommandLine& line) {
  const bool isFile = line.passwordFile && *line.passwordFile != "-";
  if (isFile) {
    line.request["password"] = PasswordFrom(*line.passwordFile);
  } else if (line.passwordFile || line.asksPassword) {
    const std::optional<QString> password = AskPassword();
    if (!password) throw UsageError("no password on standard input");
    line.request["password"] = *password;
  }
}

// Replaces the file's name in the request by its content.
void AddDocument(CommandLine& line) {
  QFile file(line.request.take("file").toString());
  if (!file.open(QIODevice::ReadOnly))
    throw UsageError(file.fileName() + ": " + file.errorString());
  const QByteArray text = file.read(kMaxFile + 1);
  const QJsonDocument document = QJsonDocument::fromJson(text);
  if (text.size() > kMaxFile || document.toJson(QJsonDocument::Compact).size() > kMaxDocument) {
    throw UsageError(file.fileName() +
                     ": too large: a network's document has at most 4 MiB, and 1000000 bytes "
                     "without indentation");
  }
  if (!document.isObject()) throw UsageError(file.fileName() + ": not a network's JSON document");
  line.request["document"] = document.object();
}

// Shows one answer of the server; returns its exit code.
ExitCode Show(const CommandLine& line, const QByteArray& received, Printer& printer) {
  const QJsonObject answer = QJsonDocument::fromJson(received).object();
  const bool beginsEvents = line.request["command"] == "events" && answer.contains("lines");
  if (line.json && !beginsEvents) {
    printer.PrintJson(received);
  } else {
    printer.Print(*line.command, answer);
  }
  if (answer["ok"].toBool()) return kDone;
  return answer["misused"].toBool() ? kUsage : kRefused;
}

// The data folders to look for a server in.
QStringList Folders(const CommandLine& line) {
  if (line.dataFolder) return {*line.dataFolder};
  QStringList folders;
  for (const auto& folder : {ApplicationDataFolder(), ServiceDataFolder()}) {
    if (folder) folders.push_back(*folder);
  }
  return folders;
}

// The folder, with a hint if its permissions keep this user out.
QString Hinted(const QString& folder) {
  const QFileInfo info(folder);
  return info.exists() && !info.isExecutable() ? folder + " (not yours: try sudo)" : folder;
}

// Status of the system service and of each instance, as one table.
int AskAll(const CommandLine& line, Printer& printer) {
  static const Command kTable{.words = "status",
                              .description = "",
                              .arguments = {},
                              .columns = {"instance", "state", "address", "port", "connections",
                                          "users", "messages-per-second", "memory"}};
  std::vector<std::pair<QString, std::optional<QString>>> servers{
      {"corvane-server", ServiceDataFolder()}};
  for (const QString& name : ServiceInstances())
    servers.emplace_back(name, InstanceDataFolder(name));
  std::erase_if(servers,
                [](const auto& one) { return !one.second || !QDir(*one.second).exists(); });
  // All are asked before the first answer is awaited, so that one that hangs delays no other.
  const QDeadlineTimer accept(kCheckAccept);
  const QDeadlineTimer end(kCheckPatience);
  std::vector<ServerLink> links(servers.size());
  for (std::size_t i = 0; i < links.size(); ++i)
    links[i].Connect(*servers[i].second);
  for (ServerLink& link : links) {
    if (link.IsOpen(accept)) link.Send(QJsonDocument(line.request).toJson(QJsonDocument::Compact));
  }
  QJsonArray rows;
  bool doAllWork = true;
  for (std::size_t i = 0; i < links.size(); ++i) {
    QJsonObject row = QJsonDocument::fromJson(links[i].Receive(end).value_or("")).object();
    const bool works = row.value("ok").toBool() && row.value("listening").toBool(true);
    doAllWork = doAllWork && works;
    if (row.contains("networks")) {
      int users = 0;
      for (const QJsonValue network : row.value("networks").toArray())
        users += network["users"].toInt();
      row["users"] = users;
    }
    const char* const fault = row.contains("listening") ? "does not listen" : "does not answer";
    row["state"] = works ? "works" : row.value("error").toString(fault);
    row["instance"] = servers[i].first;
    rows.append(row);
  }
  const QJsonObject answer{{"ok", doAllWork}, {"complete", true}, {"rows", rows}};
  if (line.json) {
    printer.PrintJson(QJsonDocument(answer).toJson(QJsonDocument::Compact));
  } else {
    printer.Print(kTable, answer);
  }
  return doAllWork ? kDone : kRefused;
}

int Ask(const CommandLine& line, Printer& printer) {
  QStringList folders = Folders(line);
  const bool isCheck = line.request["check"].toBool();
  const QDeadlineTimer end(isCheck ? kCheckPatience : kPatience);
  ServerLink server;
  const auto open = [&](const QString& folder) {
    server.Connect(folder);
    return server.IsOpen(isCheck ? QDeadlineTimer(kCheckAccept) : end);
  };
  if (std::ranges::none_of(folders, open)) {
    std::ranges::transform(folders, folders.begin(), Hinted);
    return Complain(kNoServer, "there is no server that you may administer in " +
                                   folders.join(" or ") + "; use --data-folder for another folder");
  }
  std::optional<QByteArray> received;
  if (line.request["command"] == "bans import") {
    received = ImportFile(server, line.request);
  } else {
    server.Send(QJsonDocument(line.request).toJson(QJsonDocument::Compact));
    received = server.Receive(line.command->isSlow ? QDeadlineTimer::Forever : end);
  }
  if (received) {
    const ExitCode code = Show(line, *received, printer);
    if (code != kDone || !line.request["follow"].toBool()) return code;
    while (printer.Error() == 0 && (received = server.Receive()))
      Show(line, *received, printer);
    if (received) return kDone;
  }
  return Complain(kNoServer, "the server has ended or does not answer");
}

int Execute(CommandLine line, Printer& printer) {
  if (line.text) {
    printer.PrintText(line.text->toUtf8());
    return kDone;
  }
  if (line.command->asksNoServer) {
    CheckReach(line.request, printer);
    return kDone;
  }
  AddPassword(line);
  if (line.request["command"] == "network import") AddDocument(line);
  const int code = line.all ? AskAll(line, printer) : Ask(line, printer);
  return code != kDone && line.request["check"].toBool() ? kRefused : code;
}

}  // namespace

int main(int argc, char** argv) {
  PrepareProcess();
  PrintUtf8();
  const QCoreApplication application(argc, argv);
  try {
    Printer printer;
    const int code = Execute(ParseCommandLine(QCoreApplication::arguments()), printer);
    const int error = printer.Error();
    if (code != kDone || error == 0) return code;
    // No message if the reader has stopped on purpose, as "head" does.
    if (error == EPIPE) return kNotShown;
    return Complain(kNotShown, QString("standard output: ") + std::strerror(error));
  } catch (const UsageError& error) {
    return Complain(kUsage, error.what());
  } catch (const Unreached& fault) {
    return Complain(kRefused, fault.what());
  }
}
