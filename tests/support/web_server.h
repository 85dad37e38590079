#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QTcpServer>

namespace corvane {

// A web server on a free loopback port that says exactly what it is told to, right or wrong.
class WebServer {
 public:
  struct Answer {
    std::string bytes;    // header and body as they go out
    bool closes = true;   // afterwards; else the connection stays open without a word
    bool isHeld = false;  // until AnswerHeld
  };

  // `listener` may be one that speaks TLS; `scheme` says so.
  explicit WebServer(std::unique_ptr<QTcpServer> listener = std::make_unique<QTcpServer>(),
                     std::string scheme = "http");

  // The address of a path, "http://127.0.0.1:PORT/path".
  std::string Address(const std::string& path = {}) const;

  // By path and query; an unknown one gets a 404.
  std::map<std::string, Answer> answers;
  // The requests that came, header and all.
  std::vector<std::string> requests;

  void AnswerHeld();

 private:
  void Serve(QTcpSocket& connection);

  std::unique_ptr<QTcpServer> myServer;
  std::string myScheme;
  std::vector<std::function<void()>> myHeld;
};

// A whole reply of status 200, and one that leads elsewhere.
std::string OkReply(const std::string& body);
std::string RedirectReply(const std::string& to);

}  // namespace corvane
