#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include <QTcpServer>
#include <QTcpSocket>

#include "tests/support/test_certificate.h"

namespace corvane {

// A server on a loopback port with one connection at a time, which sends any bytes.
class FalseServer {
 public:
  FalseServer();
  // With TLS.
  explicit FalseServer(const TestCertificate& certificate, std::uint16_t port = 0);

  std::uint16_t Port() const { return myServer->serverPort(); }

  // Waits for the next client and takes its connection, with TLS after the handshake. Runs Qt's
  // loop meanwhile.
  bool Accept();
  // Whether a client waits to be accepted.
  bool IsOffered() const { return myServer->hasPendingConnections(); }
  void Send(std::string_view bytes);
  // Answers a login as the real server does.
  void LetIn();
  // Bytes in this end's buffer.
  qint64 Unsent() const { return myClient->bytesToWrite(); }
  // The client's bytes since the last call.
  QByteArray Heard() { return myClient->readAll(); }
  void HangUp() { myClient->disconnectFromHost(); }
  QString ClientAddress() const { return myClient->peerAddress().toString(); }
  bool HasClient() const;

 private:
  std::unique_ptr<QTcpServer> myServer;
  std::unique_ptr<QTcpSocket> myClient;
};

}  // namespace corvane
