#include "control/control_server.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>

#include "control/answers.h"
#include "control/commands.h"
#include "framework/text.h"
#include "platform/local_socket_name.h"
#include "platform/standard_error.h"

namespace corvane {
namespace {

constexpr int kMaxConnections = 16;
constexpr int kProbeTimeout = 1000;  // ms

bool IsAnswered(const QString& name) {
  QLocalSocket probe;
  probe.connectToServer(name);
  return probe.waitForConnected(kProbeTimeout);
}

}  // namespace

ControlServer::Claim ControlServer::Take(const QString& dataFolder) {
  const QString name = LocalSocketName(dataFolder, kServerSocket);
  // The file system may not support locks; a server that answers is enough.
  if (!myLock.Take(dataFolder) || IsAnswered(name)) return Claim::Taken;
  myIsListening = myListener.Listen(name);
  return myIsListening ? Claim::Made : Claim::Failed;
}

bool ControlServer::TakeOrReport(const QString& dataFolder, const MessageBoxFunction& showMessage) {
  // App::Open reports a missing folder.
  if (!QDir(dataFolder).exists()) return true;
  const Claim claim = Take(dataFolder);
  const QString shown = QDir::toNativeSeparators(dataFolder);
  if (claim == Claim::Taken) {
    showMessage({MessageBox::Kind::Message,
                 {},
                 "Another server is running on the data folder\n" + shown.toStdString()});
  } else if (claim == Claim::Failed) {
    WriteErrorLine("corvanectl cannot reach this server: " +
                   (QFileInfo(dataFolder).isWritable()
                        ? Error()
                        : TextFromDisplay(shown) + " cannot be written to."));
  }
  return claim != Claim::Taken;
}

void ControlServer::Serve(Commands& commands) {
  if (!myIsListening) return;
  myListener.Serve([this, &commands](QLocalSocket* socket) { Accept(commands, socket); });
}

void ControlServer::Accept(Commands& commands, QLocalSocket* socket) {
  auto* const client = new ControlConnection(socket, this);
  connect(client, &QObject::destroyed, this, [this] { --myConnections; });
  client->Requested = [&commands](ControlConnection& from, const QByteArray& line) {
    commands.Run(from, line);
  };
  if (++myConnections > kMaxConnections) {
    client->AnswerAndClose(RefusalLine("too many connections; at most 16 are allowed"));
  }
}

}  // namespace corvane
