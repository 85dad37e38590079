#include "tests/support/web_server.h"

#include <QTcpSocket>
#include <QTimer>

namespace corvane {

WebServer::WebServer() {
  QObject::connect(&myServer, &QTcpServer::newConnection, &myServer, [this] {
    while (QTcpSocket* connection = myServer.nextPendingConnection()) {
      QObject::connect(connection, &QTcpSocket::readyRead, &myServer,
                       [this, connection] { Serve(*connection); });
    }
  });
  myServer.listen(QHostAddress::LocalHost);
}

std::string WebServer::Address(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(myServer.serverPort()) + path;
}

void WebServer::Serve(QTcpSocket& connection) {
  // Requests here are short and come in one piece.
  requests.push_back(connection.readAll().toStdString());
  const std::string& request = requests.back();
  const std::size_t begin = request.find(' ') + 1;
  const auto known = answers.find(request.substr(begin, request.find(' ', begin) - begin));
  const Answer answer = known == answers.end()
                            ? Answer{"HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nnone"}
                            : known->second;
  QTimer::singleShot(answer.delay, &connection, [&connection, answer] {
    connection.write(answer.bytes.data(), static_cast<qint64>(answer.bytes.size()));
    if (answer.closes) connection.disconnectFromHost();
  });
}

std::string OkReply(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace corvane
