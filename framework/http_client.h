#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <QByteArray>
#include <QString>
#include <QUrl>

class QNetworkAccessManager;

namespace corvane {

// Joins a service's base address ("http://host" or "https://host/folder", with or without slashes
// at its end) and a path with its query. With an empty base the result is no web address, and a
// request for it fails.
QUrl AddressBelow(std::string_view base, std::string_view path);

// A request and its bounds.
struct HttpRequest {
  QUrl url;
  std::chrono::milliseconds timeout{30'000};  // for the whole transfer, redirects included
  std::chrono::milliseconds silence{0};       // longest pause of the host; 0: no bound
  std::int64_t maxBytes = 1024 * 1024;
  // Where the reply goes: a temporary file beside it that is renamed once complete. Empty: into
  // HttpReply::body.
  QString file;
  // Called as the reply arrives; `total` is -1 if the host has not announced it. May destroy the
  // transfer.
  std::function<void(std::int64_t received, std::int64_t total)> progress;
};

struct HttpReply {
  // Whether the reply is complete: status 200, as many bytes as announced, within the bounds, and
  // written to its file. An empty reply to a request with a file has failed.
  bool succeeded = false;
  QByteArray body;
};

// A request in progress. Destroying it cancels the request: no callback runs afterwards, and no
// file is left behind.
class HttpTransfer {
 public:
  virtual ~HttpTransfer() = default;
};

// Fetches documents over HTTP and HTTPS (RFC 9110) with the program's event loop; nothing blocks.
// Follows at most five redirects, none from https to http. Uses no proxy and no cookies, and sends
// the program's name and version. Transfers borrow the client and must not outlive it.
//
// Limits: each of Qt's network managers runs at most six transfers to one host at a time. Further
// transfers wait, and their timeout runs meanwhile. A reply without an announced length cannot be
// checked: if the connection is cut, the reply may count as complete.
class HttpClient {
 public:
  using Done = std::function<void(const HttpReply&)>;

  // `userAgent` is, for example, "Name/1.2". `managers` is the number of Qt's network managers,
  // which serve the transfers in turn.
  explicit HttpClient(const std::string& userAgent, std::size_t managers = 1);
  ~HttpClient();
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;

  // Sends a GET. Calls `done` exactly once from the event loop, never from inside Get, unless the
  // transfer is destroyed first. `done` may destroy the transfer.
  [[nodiscard]] std::unique_ptr<HttpTransfer> Get(HttpRequest request, Done done);

 private:
  const QByteArray myUserAgent;
  std::vector<std::unique_ptr<QNetworkAccessManager>> myManagers;
  std::size_t myNext = 0;
};

}  // namespace corvane
