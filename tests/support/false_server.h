#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include <QTcpServer>
#include <QTcpSocket>

namespace corvane {

// Something on a loopback port that takes one connection after the other and says whatever it is
// told to say.
class FalseServer {
 public:
  FalseServer() { myServer.listen(QHostAddress::LocalHost); }

  std::uint16_t Port() const { return myServer.serverPort(); }

  // Whether a client has connected that was not taken before. Runs Qt's loop meanwhile.
  bool Accept();
  void Send(std::string_view bytes);
  // Plays the honest server's part of a log-in.
  void LetIn();
  // How much the client has not taken of what was sent, as far as this end knows.
  qint64 Unsent() const { return myClient->bytesToWrite(); }
  // What has come from the client and was not asked for before.
  QByteArray Heard() { return myClient->readAll(); }
  void HangUp() { myClient->disconnectFromHost(); }
  bool HasClient() const;

 private:
  QTcpServer myServer;
  std::unique_ptr<QTcpSocket> myClient;
};

}  // namespace corvane
