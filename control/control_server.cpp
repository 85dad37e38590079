#include "control/control_server.h"

#include <QDir>
#include <QLocalSocket>
#include <QLockFile>

#include "control/answers.h"
#include "control/commands.h"
#include "control/control_name.h"
#include "framework/text.h"

namespace corvane {
namespace {

constexpr int kMostConnections = 16;
constexpr int kPatience = 1000;  // ms

bool IsAnswered(const QString& name) {
  QLocalSocket probe;
  probe.connectToServer(name);
  return probe.waitForConnected(kPatience);
}

}  // namespace

ControlServer::Claim ControlServer::Take(const QString& dataFolder) {
  const QString name = ControlName(dataFolder);
  // Of two that start at once, one looks first. Without the lock there is no socket to be had.
  QLockFile looking(QDir(dataFolder).absoluteFilePath(QStringLiteral("corvane-server.lock")));
  looking.tryLock(kPatience);
  if (IsAnswered(name)) return Claim::Taken;
  QLocalServer::removeServer(name);
  myServer.setSocketOptions(QLocalServer::UserAccessOption);
  return myServer.listen(name) ? Claim::Made : Claim::Failed;
}

std::string ControlServer::Error() const {
  return TextFromDisplay(myServer.errorString());
}

void ControlServer::Serve(Commands& commands) {
  connect(&myServer, &QLocalServer::newConnection, this, [this, &commands] { Accept(commands); });
  Accept(commands);
}

void ControlServer::Accept(Commands& commands) {
  while (QLocalSocket* const socket = myServer.nextPendingConnection()) {
    auto* const client = new ControlConnection(socket, this);
    connect(client, &QObject::destroyed, this, [this] { --myConnections; });
    client->Requested = [&commands](ControlConnection& from, const QByteArray& line) {
      commands.Run(from, line);
    };
    if (++myConnections > kMostConnections) {
      client->AnswerAndClose(RefusalLine("too many connections; expected are 16 at most"));
    }
  }
}

}  // namespace corvane
