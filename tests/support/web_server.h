#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QTcpServer>

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
                     std::string scheme = "http");

  // The address of a path, "http://127.0.0.1:PORT/path".
  std::string Address(const std::string& path = {}) const;

  // By path and query. Others get a 404.
  std::map<std::string, Answer> answers;
  // All requests, with headers.
  std::vector<std::string> requests;

  void AnswerHeld();

 private:
  void Serve(QTcpSocket& connection);

  std::unique_ptr<QTcpServer> myServer;
  std::string myScheme;
  std::vector<std::function<void()>> myHeld;
};

// Replies of status 200 and 302.
std::string OkReply(const std::string& body);
std::string RedirectReply(const std::string& to);

}  // namespace corvane
