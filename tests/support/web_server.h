#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include <QTcpServer>

namespace corvane {

// A web server on a free loopback port that says exactly what it is told to, right or wrong.
class WebServer {
 public:
  struct Answer {
    std::string bytes;   // header and body as they go out
    bool closes = true;  // afterwards; else the connection stays open without a word
    std::chrono::milliseconds delay{0};
  };

  WebServer();

  // The address of a path, "http://127.0.0.1:PORT/path".
  std::string Address(const std::string& path = {}) const;

  // By path and query; an unknown one gets a 404.
  std::map<std::string, Answer> answers;
  // The requests that came, header and all.
  std::vector<std::string> requests;

 private:
  void Serve(QTcpSocket& connection);

  QTcpServer myServer;
};

// A whole reply of status 200.
std::string OkReply(const std::string& body);

}  // namespace corvane
