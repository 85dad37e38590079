// Sends lines to the server's local socket: each is answered by one line with the outcome and, on
// failure, the reason, and the server goes on.

#include <cstdint>
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
#include "fuzz/expect.h"
#include "tests/support/other_program.h"

namespace {

using namespace corvane;

// The server is replaced after this many inputs, since they only ever add to it.
constexpr int kMaxInputs = 200;

QTemporaryDir& NewFolder(QTemporaryDir& folder) {
  MakeDatabase(folder.filePath(QStringLiteral("serverdb.rsd")));
  return folder;
}

class Server {
 public:
  Server() {
    Expect(myApp.Open(), "the server starts");
    Expect(myApp.Op().AddNetwork("North", "secret", 5, true), "a network");
    myCommands = std::make_unique<Commands>(myApp.Op());
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

// Whether the request would end the server, write files anywhere, or make it send lines unasked.
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
  if (inputs++ % kMaxInputs == 0) server = std::make_unique<Server>();

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
