#include "web/http_server.h"

#include <algorithm>
#include <cstring>
#include <list>
#include <microhttpd.h>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

#include <QByteArray>
#include <QFile>
#include <QTcpServer>

#include "framework/ip_address.h"

namespace corvane::web {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kMaxConnections = 600;
constexpr unsigned kTimeout = 10;  // seconds
constexpr unsigned kStreamTimeout = 30;
constexpr std::size_t kRequestMemory = 16 << 10;
constexpr std::size_t kStreamBlock = 16 << 10;
// The system's, of a stream. It holds old events for a slow viewer.
constexpr int kSendBuffer = 64 << 10;
constexpr std::chrono::seconds kPing{15};  // shows both ends that the other is still there
constexpr std::size_t kMaxGuessers = 10'000;
constexpr int kFreeGuesses = 10;
constexpr std::chrono::minutes kGuessPeriod{1};
constexpr std::chrono::seconds kGuessDelay{1};
constexpr std::size_t kMaxDelayed = 100;
constexpr unsigned kMaxPerAddress = 100;  // connections; not behind a proxy on this machine
constexpr std::ptrdiff_t kMaxViewersPerAddress = 50;

const auto kPingBytes = std::make_shared<const std::string>(": still here\n\n");

constexpr const char* kPrivate = "private, max-age=3600";
constexpr const char* kPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; "
    "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

struct ResponseEnd {
  void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using Response = std::unique_ptr<MHD_Response, ResponseEnd>;

MHD_Result Queue(MHD_Connection* connection, unsigned status, Response response, const char* type,
                 const char* cache) {
  if (response == nullptr) return MHD_NO;
  const std::pair<const char*, const char*> headers[] = {
      {"Content-Type", type},
      {"Cache-Control", cache},
      {"Content-Security-Policy", kPolicy},
      {"X-Content-Type-Options", "nosniff"},
      {"Referrer-Policy", "no-referrer"},
      {"Cross-Origin-Resource-Policy", "same-origin"},
      {"X-Robots-Tag", "noindex"}};
  for (const auto& [name, value] : headers)
    MHD_add_response_header(response.get(), name, value);
  if (status == MHD_HTTP_METHOD_NOT_ALLOWED)
    MHD_add_response_header(response.get(), "Allow", "GET, HEAD");
  return MHD_queue_response(connection, status, response.get());
}

Response FromBytes(const std::string& bytes, MHD_ResponseMemoryMode mode) {
  return Response(
      MHD_create_response_from_buffer(bytes.size(), const_cast<char*>(bytes.data()), mode));
}

MHD_Result AnswerText(MHD_Connection* connection, unsigned status, const std::string& text) {
  return Queue(connection, status, FromBytes(text, MHD_RESPMEM_MUST_COPY),
               "text/plain; charset=utf-8", "no-store");
}

// For an address that was copied without its last slash.
MHD_Result AnswerSlash(MHD_Connection* connection, const QByteArray& token) {
  Response response = FromBytes({}, MHD_RESPMEM_MUST_COPY);
  MHD_add_response_header(response.get(), "Location", (token + '/').constData());
  return Queue(connection, MHD_HTTP_PERMANENT_REDIRECT, std::move(response), "text/plain",
               "no-store");
}

std::optional<int> WholeNumber(const QByteArray& text) {
  bool isNumber = false;
  const int number = text.toInt(&isNumber);
  if (!isNumber || QByteArray::number(number) != text) return std::nullopt;
  return number;
}

// Takes a header as X-Forwarded-For if it is one. The last counts: a proxy may put its own behind
// those of the client.
MHD_Result TakeForwarded(void* text, MHD_ValueKind /*kind*/, const char* name, const char* value) {
  if (qstricmp(name, "X-Forwarded-For") == 0) *static_cast<QByteArray*>(text) = value;
  return MHD_YES;
}

// The address of the client, or what a proxy on this machine names as such. Empty if that names
// none.
std::string AddressOf(MHD_Connection* connection) {
  const auto* const info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
  const QHostAddress address(info->client_addr);
  if (!address.isLoopback()) return ClientRange(address.toString().toStdString());
  QByteArray text;
  MHD_get_connection_values(connection, MHD_HEADER_KIND, &TakeForwarded, &text);
  const QByteArray last = text.mid(text.lastIndexOf(',') + 1).trimmed();
  return ClientRange(AddressFromText(last.toStdString()).value_or(std::string()));
}

}  // namespace

class HttpServer::Implementation {
 public:
  Implementation(std::map<QString, Site> sites, Assets assets)
      : mySites(std::move(sites)), myAssets(std::move(assets)) {}
  ~Implementation();

  QString Start(const QHostAddress& address, std::uint16_t port);
  void SetLinks(const std::vector<Link>& links);
  void Wake();

 private:
  // A browser that follows a stream. All but the constants belong to the lock.
  struct Viewer {
    Implementation& server;
    MHD_Connection* connection;
    std::string address;
    QByteArray tokenHash;
    std::shared_ptr<Channel> channel;
    std::uint64_t seen = 0;
    Channel::Bytes event{};  // being sent
    std::size_t sent = 0;    // of it
    Clock::time_point lastSent = Clock::now();
    bool isSuspended = false;
    bool isEnding = false;
  };
  struct Delayed {
    MHD_Connection* connection;
    Clock::time_point due;
  };

  static MHD_Result Handle(void* self, MHD_Connection* connection, const char* url,
                           const char* method, const char* version, const char* upload,
                           std::size_t* uploadSize, void** state);
  static ssize_t ReadStream(void* viewer, std::uint64_t position, char* buffer, std::size_t size);
  static void EndStream(void* viewer);

  MHD_Result Answer(MHD_Connection* connection, const QByteArray& path, void** state);
  MHD_Result AnswerWrong(MHD_Connection* connection, void** state);
  MHD_Result AnswerStream(MHD_Connection* connection, const QByteArray& tokenHash,
                          const Site& site);
  MHD_Result AnswerTile(MHD_Connection* connection, const Site& site, const QByteArray& rest);
  bool MustWait(const std::string& address);
  // Whether the viewer has something to read, which it then holds.
  static bool HasNews(Viewer& viewer);

  const std::map<QString, Site> mySites;
  const Assets myAssets;
  QTcpServer myListener;
  MHD_Daemon* myDaemon = nullptr;
  std::mutex myMutex;
  std::map<QByteArray, QString> myLinks;  // networks by the tokens' hashes
  std::list<Viewer> myViewers;
  std::vector<Delayed> myDelayed;
  std::unordered_map<std::string, int> myGuesses;  // by address
  Clock::time_point myGuessesBegin = Clock::now();
  bool myIsStopping = false;
};

HttpServer::Implementation::~Implementation() {
  if (myDaemon == nullptr) return;
  {
    const std::scoped_lock lock(myMutex);
    myIsStopping = true;
    myLinks.clear();
  }
  // The listener owns its descriptor.
  MHD_quiesce_daemon(myDaemon);
  SetLinks({});
  Wake();
  MHD_stop_daemon(myDaemon);
}

QString HttpServer::Implementation::Start(const QHostAddress& address, std::uint16_t port) {
  myListener.setListenBacklogSize(kMaxConnections);
  if (!myListener.listen(address, port)) return myListener.errorString();
  myListener.pauseAccepting();
  myDaemon = MHD_start_daemon(
      MHD_USE_AUTO_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, &Handle, this,
      MHD_OPTION_LISTEN_SOCKET, static_cast<MHD_socket>(myListener.socketDescriptor()),
      MHD_OPTION_CONNECTION_LIMIT, kMaxConnections, MHD_OPTION_CONNECTION_TIMEOUT, kTimeout,
      MHD_OPTION_CONNECTION_MEMORY_LIMIT, kRequestMemory, MHD_OPTION_PER_IP_CONNECTION_LIMIT,
      address.isLoopback() ? 0U : kMaxPerAddress, MHD_OPTION_END);
  return myDaemon == nullptr ? QStringLiteral("the HTTP server cannot be started") : QString();
}

void HttpServer::Implementation::SetLinks(const std::vector<Link>& links) {
  const std::scoped_lock lock(myMutex);
  myLinks.clear();
  for (const Link& link : links)
    myLinks[link.tokenHash] = link.network;
  for (Viewer& viewer : myViewers)
    viewer.isEnding = !myLinks.contains(viewer.tokenHash);
}

void HttpServer::Implementation::Wake() {
  const std::scoped_lock lock(myMutex);
  for (Viewer& viewer : myViewers) {
    if (!viewer.isSuspended || !(viewer.isEnding || HasNews(viewer))) continue;
    viewer.isSuspended = false;
    MHD_resume_connection(viewer.connection);
  }
  const auto now = Clock::now();
  std::erase_if(myDelayed, [&](const Delayed& delayed) {
    if (delayed.due > now && !myIsStopping) return false;
    MHD_resume_connection(delayed.connection);
    return true;
  });
}

bool HttpServer::Implementation::HasNews(Viewer& viewer) {
  if (viewer.event != nullptr) return true;
  Channel::Event next = viewer.channel->Next(viewer.seen);
  viewer.seen = next.version;
  viewer.event = std::move(next.bytes);
  if (viewer.event == nullptr && Clock::now() - viewer.lastSent >= kPing) viewer.event = kPingBytes;
  viewer.sent = 0;
  return viewer.event != nullptr;
}

ssize_t HttpServer::Implementation::ReadStream(void* viewer, std::uint64_t /*position*/,
                                               char* buffer, std::size_t size) {
  auto& self = *static_cast<Viewer*>(viewer);
  const std::scoped_lock lock(self.server.myMutex);
  if (self.isEnding) return MHD_CONTENT_READER_END_OF_STREAM;
  if (!HasNews(self)) {
    self.isSuspended = true;
    MHD_suspend_connection(self.connection);
    return 0;
  }
  const std::size_t bytes = std::min(size, self.event->size() - self.sent);
  std::copy_n(self.event->data() + self.sent, bytes, buffer);
  self.sent += bytes;
  self.lastSent = Clock::now();
  if (self.sent == self.event->size()) self.event = nullptr;
  return static_cast<ssize_t>(bytes);
}

void HttpServer::Implementation::EndStream(void* viewer) {
  auto& self = *static_cast<Viewer*>(viewer);
  Implementation& server = self.server;
  const std::scoped_lock lock(server.myMutex);
  server.myViewers.remove_if([&self](const Viewer& one) { return &one == &self; });
}

MHD_Result HttpServer::Implementation::Handle(void* self, MHD_Connection* connection,
                                              const char* url, const char* method,
                                              const char* /*version*/, const char* /*upload*/,
                                              std::size_t* /*uploadSize*/, void** state) {
  const bool isRead = std::strcmp(method, MHD_HTTP_METHOD_GET) == 0 ||
                      std::strcmp(method, MHD_HTTP_METHOD_HEAD) == 0;
  if (!isRead) return AnswerText(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "Only GET and HEAD.\n");
  // An answer to the first call, before the request is complete, would close the connection.
  if (std::exchange(*state, *state == nullptr ? self : *state) == nullptr) return MHD_YES;
  return static_cast<Implementation*>(self)->Answer(connection, QByteArray(url).mid(1), state);
}

MHD_Result HttpServer::Implementation::Answer(MHD_Connection* connection, const QByteArray& path,
                                              void** state) {
  const qsizetype slash = path.indexOf('/');
  const QByteArray token = slash < 0 ? path : path.left(slash);
  const QByteArray rest = slash < 0 ? QByteArray() : path.mid(slash + 1);
  const QByteArray tokenHash = Links::HashOf(token);
  const Site* site = nullptr;
  {
    const std::scoped_lock lock(myMutex);
    const auto link = myLinks.find(tokenHash);
    if (link != myLinks.end()) {
      const auto found = mySites.find(link->second);
      if (found != mySites.end()) site = &found->second;
    }
  }
  if (site == nullptr) return AnswerWrong(connection, state);
  if (slash < 0) return AnswerSlash(connection, token);
  if (rest == "events") return AnswerStream(connection, tokenHash, *site);
  if (rest == "place.json") {
    return Queue(connection, MHD_HTTP_OK, FromBytes(site->description, MHD_RESPMEM_PERSISTENT),
                 "application/json", "no-cache");
  }
  if (rest.startsWith("tiles/")) return AnswerTile(connection, *site, rest.mid(6));
  const auto asset = myAssets.find(rest.isEmpty() ? "index.html" : rest.toStdString());
  if (asset == myAssets.end()) return AnswerText(connection, MHD_HTTP_NOT_FOUND, "Not found.\n");
  return Queue(connection, MHD_HTTP_OK, FromBytes(asset->second.bytes, MHD_RESPMEM_PERSISTENT),
               asset->second.type, rest.isEmpty() ? "no-cache" : kPrivate);
}

bool HttpServer::Implementation::MustWait(const std::string& address) {
  const auto now = Clock::now();
  if (now - myGuessesBegin >= kGuessPeriod) {
    myGuesses.clear();
    myGuessesBegin = now;
  }
  if (myGuesses.size() >= kMaxGuessers && !myGuesses.contains(address)) return true;
  return ++myGuesses[address] > kFreeGuesses;
}

MHD_Result HttpServer::Implementation::AnswerWrong(MHD_Connection* connection, void** state) {
  if (*state == this) {
    const std::scoped_lock lock(myMutex);
    if (!myIsStopping && MustWait(AddressOf(connection))) {
      if (myDelayed.size() >= kMaxDelayed) return MHD_NO;
      *state = &myDelayed;  // waits once only
      myDelayed.push_back({connection, Clock::now() + kGuessDelay});
      MHD_suspend_connection(connection);
      return MHD_YES;
    }
  }
  return AnswerText(connection, MHD_HTTP_NOT_FOUND, "Not found.\n");
}

MHD_Result HttpServer::Implementation::AnswerStream(MHD_Connection* connection,
                                                    const QByteArray& tokenHash, const Site& site) {
  Viewer* viewer = nullptr;
  {
    const std::scoped_lock lock(myMutex);
    const std::string address = AddressOf(connection);
    const auto isNeighbour = [&address](const Viewer& one) { return one.address == address; };
    const bool isCrowded =
        !address.empty() && std::ranges::count_if(myViewers, isNeighbour) >= kMaxViewersPerAddress;
    if (isCrowded || myViewers.size() >= kMaxViewers)
      return AnswerText(connection, MHD_HTTP_SERVICE_UNAVAILABLE, "Too many viewers.\n");
    viewer = &myViewers.emplace_back(Viewer{*this, connection, address, tokenHash, site.channel});
    viewer->isEnding = myIsStopping;
  }
  Response response(MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kStreamBlock, &ReadStream,
                                                      viewer, &EndStream));
  if (response == nullptr) {
    EndStream(viewer);
    return MHD_NO;
  }
  const auto* const info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
  setsockopt(info->connect_fd, SOL_SOCKET, SO_SNDBUF, reinterpret_cast<const char*>(&kSendBuffer),
             sizeof kSendBuffer);
  MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT, kStreamTimeout);
  // For proxies that would otherwise hold events back.
  MHD_add_response_header(response.get(), "X-Accel-Buffering", "no");
  return Queue(connection, MHD_HTTP_OK, std::move(response), "text/event-stream", "no-store");
}

MHD_Result HttpServer::Implementation::AnswerTile(MHD_Connection* connection, const Site& site,
                                                  const QByteArray& rest) {
  // FACET/LEVEL/COLUMN/ROW, whole numbers and nothing else.
  std::vector<int> numbers;
  for (const QByteArray& part : rest.split('/')) {
    if (const auto number = WholeNumber(part)) numbers.push_back(*number);
  }
  if (numbers.size() == 4 && rest.count('/') == 3) {
    const auto tiles = site.tiles.find(numbers[0]);
    if (tiles != site.tiles.end()) {
      QFile file(tiles->second.FileOf({numbers[1], numbers[2], numbers[3]}));
      if (file.open(QIODevice::ReadOnly)) {
        const bool isPng = file.fileName().endsWith(".png");
        return Queue(connection, MHD_HTTP_OK,
                     FromBytes(file.readAll().toStdString(), MHD_RESPMEM_MUST_COPY),
                     isPng ? "image/png" : "image/jpeg", kPrivate);
      }
    }
  }
  return AnswerText(connection, MHD_HTTP_NOT_FOUND, "Not found.\n");
}

HttpServer::HttpServer(std::map<QString, Site> sites, Assets assets)
    : myImplementation(std::make_unique<Implementation>(std::move(sites), std::move(assets))) {}

HttpServer::~HttpServer() = default;

QString HttpServer::Start(const QHostAddress& address, std::uint16_t port) {
  return myImplementation->Start(address, port);
}

void HttpServer::SetLinks(const std::vector<Link>& links) {
  myImplementation->SetLinks(links);
}

void HttpServer::Wake() {
  myImplementation->Wake();
}

}  // namespace corvane::web
