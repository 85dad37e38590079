// Lines to the server's local socket: each is answered by one line, which says whether it was done
// and, if not, why; and the server goes on.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>

#include "app/app.h"
#include "control/commands.h"
#include "control/control_connection.h"
#include "tests/support/other_program.h"

namespace {

using namespace corvane;

// What is added is not taken away, so a server serves only so many inputs.
constexpr int kMostInputs = 200;

void Expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "fault: %s\n", what);
  std::abort();
}

QTemporaryDir& NewFolder(QTemporaryDir& folder) {
  MakeDatabase(folder.filePath(QStringLiteral("serverdb.rsd")));
  return folder;
}

class Server {
 public:
  Server() {
    Expect(myApp.Open(), "the server starts");
    Expect(myApp.Actions().AddNetwork("North", "secret", 5, true), "a network");
    myCommands = std::make_unique<Commands>(myApp.Actions());
    Expect(mySocket.listen(myFolder.filePath(QStringLiteral("control"))), "a socket");
    myClient.connectToServer(mySocket.fullServerName());
    Expect(mySocket.waitForNewConnection(1000), "a connection");
    auto* const connection = new ControlConnection(mySocket.nextPendingConnection(), &mySocket);
    connection->Requested = [this](ControlConnection& from, const QByteArray& line) {
      myCommands->Run(from, line);
    };
  }

  QJsonObject Ask(const QByteArray& line) {
    myClient.write(line + '\n');
    while (!myClient.canReadLine())
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return QJsonDocument::fromJson(myClient.readLine()).object();
  }

 private:
  QTemporaryDir myFolder;
  App myApp{NewFolder(myFolder).path(), [](const MessageBox&) { return MessageBox::Answer(); }};
  std::unique_ptr<Commands> myCommands;
  QLocalServer mySocket;
  QLocalSocket myClient;
};

// Whether it is not for here: it ends the server, writes files wherever it says, or has lines come
// unasked.
bool IsLeftOut(const QByteArray& line) {
  const QJsonObject request = QJsonDocument::fromJson(line).object();
  const QString command = request["command"].toString();
  return command == "quit" || command == "backup" || !request["follow"].isUndefined();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static int argc = 1;
  static char name[] = "fuzz_control_requests";
  static char* argv[] = {name, nullptr};
  static const QCoreApplication application(argc, argv);
  static std::unique_ptr<Server> server;
  static int inputs = 0;
  if (inputs++ % kMostInputs == 0) server = std::make_unique<Server>();

  const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
  for (const QByteArray& line : bytes.split('\n')) {
    if (IsLeftOut(line)) continue;
    const QJsonObject answer = server->Ask(line);
    Expect(answer["ok"].isBool(), "an answer says whether it was done");
    Expect(answer["ok"].toBool() || !answer["error"].toString().isEmpty(), "and if not, why");
  }
  Expect(server->Ask(R"({"command":"status"})")["ok"].toBool(), "the server goes on");
  return 0;
}
