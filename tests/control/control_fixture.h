#pragma once

#include <memory>
#include <string>

#include <QLocalSocket>
#include <QProcess>

#include "app/server_application.h"
#include "control/commands.h"
#include "control/control_server.h"
#include "platform/local_socket_name.h"
#include "tests/app/app_fixture.h"

namespace corvane {

struct Outcome {
  int exitCode = -1;
  std::string text;  // of both streams
};

// A server with its local socket, and Ann and Bob logged into its network North.
class ControlTest : public AppFixture {
 protected:
  explicit ControlTest(bool isHardened = false) : AppFixture(isHardened) {
    myApp.LoadServerSocket();
    EXPECT_EQ(control.Take(myFolder.path()), ControlServer::Claim::Made) << control.Error();
    control.Serve(commands);
    application.Passes = &myApp.Loop().Passes();
    ann = LoggedIn("Ann");
    bob = LoggedIn("Bob", "North", "127.0.0.2");
  }

  void TearDown() override { application.Passes = nullptr; }

  // Runs corvanectl.
  Outcome Run(const QStringList& arguments, const QByteArray& input = {}) {
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QStringLiteral(CORVANECTL),
                  QStringList{"--data-folder", myFolder.path()} + arguments);
    program.write(input);
    program.closeWriteChannel();
    EXPECT_TRUE(PumpUntil([&] { return program.state() == QProcess::NotRunning; }));
    return {program.exitCode(), program.readAll().replace("\r\n", "\n").toStdString()};
  }
  // The same; each blank of the line begins an argument, which may be empty.
  Outcome Type(const QString& line, const QByteArray& input = {}) {
    return Run(line.split(' '), input);
  }

  // Sends bytes to the local socket. Returns the answer, or nothing if the server disconnects.
  QByteArray Ask(QLocalSocket& client, const QByteArray& bytes) {
    client.connectToServer(LocalSocketName(myFolder.path(), kServerSocket));
    client.write(bytes);
    EXPECT_TRUE(PumpUntil(
        [&] { return client.canReadLine() || client.state() == QLocalSocket::UnconnectedState; }));
    return client.isOpen() ? client.readLine() : QByteArray();
  }

  ServerApplication<QCoreApplication>& application =
      dynamic_cast<ServerApplication<QCoreApplication>&>(*qApp);
  ControlServer control;
  Commands commands{myApp.Op()};
  std::unique_ptr<TestClient> ann;
  std::unique_ptr<TestClient> bob;
};

}  // namespace corvane
