#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QTcpServer>
#include <QTcpSocket>

namespace corvane {

// A web server on a free loopback port with given answers, valid HTTP or not.
class WebServer {
 public:
  struct Answer {
    std::string bytes;    // header and body
    bool closes = true;   // the connection afterwards; else it stays open
    bool isHeld = false;  // until AnswerHeld
  };

  // `listener` may speak TLS; then `scheme` is "https".
  explicit WebServer(std::unique_ptr<QTcpServer> listener = std::make_unique<QTcpServer>(),
                     std::string scheme = "http")
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

  // The address of a path, "http://127.0.0.1:PORT/path".
  std::string Address(const std::string& path = {}) const {
    return myScheme + "://127.0.0.1:" + std::to_string(myServer->serverPort()) + path;
  }

  // By path and query. Others get a 404.
  std::map<std::string, Answer> answers;
  // All requests, with headers.
  std::vector<std::string> requests;

  void AnswerHeld() {
    for (const auto& reply : std::exchange(myHeld, {}))
      reply();
  }

 private:
  void Serve(QTcpSocket& connection) {
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

  std::unique_ptr<QTcpServer> myServer;
  std::string myScheme;
  std::vector<std::function<void()>> myHeld;
};

// Replies of status 200 and 302.
inline std::string OkReply(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}
inline std::string RedirectReply(const std::string& to) {
  return "HTTP/1.1 302 Found\r\nLocation: " + to + "\r\nContent-Length: 0\r\n\r\n";
}

}  // namespace corvane
