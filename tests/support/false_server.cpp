#include "tests/support/false_server.h"

#include <QSslConfiguration>
#include <QSslServer>

#include "tests/support/test_client.h"

namespace corvane {

FalseServer::FalseServer() : myServer(std::make_unique<QTcpServer>()) {
  myServer->listen(QHostAddress::LocalHost);
}

FalseServer::FalseServer(const TestCertificate& certificate, std::uint16_t port) {
  QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
  configuration.setLocalCertificate(certificate.certificate);
  configuration.setPrivateKey(certificate.key);
  auto server = std::make_unique<QSslServer>();
  server->setSslConfiguration(configuration);
  myServer = std::move(server);
  myServer->listen(QHostAddress::LocalHost, port);
}

bool FalseServer::Accept() {
  if (!PumpUntil([this] { return myServer->hasPendingConnections(); })) return false;
  myClient.reset(myServer->nextPendingConnection());
  return true;
}

void FalseServer::Send(std::string_view bytes) {
  myClient->write(bytes.data(), static_cast<qint64>(bytes.size()));
}

void FalseServer::LetIn() {
  Send(WireBytes(1, "Network") + WireBytes(2, "OK") + WireBytes(3, "OK") + WireBytes(4, "OK"));
}

bool FalseServer::HasClient() const {
  return myClient && myClient->state() == QAbstractSocket::ConnectedState;
}

}  // namespace corvane
