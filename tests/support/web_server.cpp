#include "tests/support/web_server.h"

#include <utility>

#include <QTcpSocket>

namespace corvane {

WebServer::WebServer(std::unique_ptr<QTcpServer> listener, std::string scheme)
    : myServer(std::move(listener)), myScheme(std::move(scheme)) {
  QTcpServer* const server = myServer.get();
  QObject::connect(server, &QTcpServer::pendingConnectionAvailable, server, [this, server] {
    while (QTcpSocket* connection = server->nextPendingConnection()) {
      QObject::connect(connection, &QTcpSocket::readyRead, server,
                       [this, connection] { Serve(*connection); });
    }
  });
  myServer->listen(QHostAddress::LocalHost);
}

std::string WebServer::Address(const std::string& path) const {
  return myScheme + "://127.0.0.1:" + std::to_string(myServer->serverPort()) + path;
}

void WebServer::Serve(QTcpSocket& connection) {
  // Requests are short and arrive in one piece.
  requests.push_back(connection.readAll().toStdString());
  const std::string& request = requests.back();
  const std::size_t begin = request.find(' ') + 1;
  const auto known = answers.find(request.substr(begin, request.find(' ', begin) - begin));
  const Answer answer = known == answers.end()
                            ? Answer{"HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nnone"}
                            : known->second;
  const auto reply = [&connection, answer] {
    if (connection.state() != QAbstractSocket::ConnectedState) return;
    connection.write(answer.bytes.data(), static_cast<qint64>(answer.bytes.size()));
    if (answer.closes) connection.disconnectFromHost();
  };
  if (!answer.isHeld) return reply();
  myHeld.emplace_back(reply);
}

void WebServer::AnswerHeld() {
  for (const auto& reply : std::exchange(myHeld, {}))
    reply();
}

std::string OkReply(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string RedirectReply(const std::string& to) {
  return "HTTP/1.1 302 Found\r\nLocation: " + to + "\r\nContent-Length: 0\r\n\r\n";
}

}  // namespace corvane
