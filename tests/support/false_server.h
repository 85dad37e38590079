#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include <QTcpServer>
#include <QTcpSocket>

namespace corvane {

// A server on a loopback port with one connection at a time, which sends any bytes.
class FalseServer {
 public:
  FalseServer() { myServer.listen(QHostAddress::LocalHost); }

  std::uint16_t Port() const { return myServer.serverPort(); }

  // Waits for the next client and takes its connection. Runs Qt's loop meanwhile.
  bool Accept();
  void Send(std::string_view bytes);
  // Answers a login as the real server does.
  void LetIn();
  // Bytes in this end's buffer.
  qint64 Unsent() const { return myClient->bytesToWrite(); }
  // The client's bytes since the last call.
  QByteArray Heard() { return myClient->readAll(); }
  void HangUp() { myClient->disconnectFromHost(); }
  bool HasClient() const;

 private:
  QTcpServer myServer;
  std::unique_ptr<QTcpSocket> myClient;
};

}  // namespace corvane
