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

// The address of a path, with its query, below a service's base address ("http://host" or
// "https://host/folder", with slashes at its end or without). Below an empty one it is no web
// address, and a request for it fails.
QUrl AddressBelow(std::string_view base, std::string_view path);

// What is fetched, and within which bounds.
struct HttpRequest {
  QUrl url;
  // For the whole of it, redirects included; and how long the host may say nothing meanwhile, 0
  // for no bound of its own.
  std::chrono::milliseconds timeout{30'000};
  std::chrono::milliseconds silence{0};
  std::int64_t maxBytes = 1024 * 1024;
  // Where the reply goes: written beside and renamed when it is whole, so that the file is never
  // half a reply. Empty: into HttpReply::body.
  QString file;
  // Called as the reply comes in; `total` is -1 while the host has not announced it. May destroy
  // the transfer.
  std::function<void(std::int64_t received, std::int64_t total)> progress;
};

struct HttpReply {
  // Whether the whole reply came: status 200, as many bytes as were announced, within the bounds,
  // and written where it should be. A file is never empty: nothing at all is no reply for one.
  bool succeeded = false;
  QByteArray body;
};

// A request that is under way. Destroying it cancels the request: nothing is called any more and
// no file is left behind.
class HttpTransfer {
 public:
  virtual ~HttpTransfer() = default;
};

// Fetches documents over HTTP and HTTPS (RFC 9110) with the program's event loop; nothing blocks.
// Follows at most five redirects, none from https to http. Uses no proxy and no cookies, and says
// the program's name and version. Borrowed by its transfers, which must not outlive it.
//
// Of the transfers to one host, six for each of Qt's managers are served at once and the others
// wait; their time runs meanwhile.
class HttpClient {
 public:
  using Done = std::function<void(const HttpReply&)>;

  // `userAgent` as in "Name/1.2".
  explicit HttpClient(const std::string& userAgent, std::size_t managers = 1);
  ~HttpClient();
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;

  // Sends a GET. `done` is called exactly once, from the event loop and never from inside Get,
  // unless the transfer is destroyed before; it may destroy the transfer.
  [[nodiscard]] std::unique_ptr<HttpTransfer> Get(HttpRequest request, Done done);

 private:
  const QByteArray myUserAgent;
  // Each takes its turn.
  std::vector<std::unique_ptr<QNetworkAccessManager>> myManagers;
  std::size_t myNext = 0;
};

}  // namespace corvane
