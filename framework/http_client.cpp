#include "framework/http_client.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QRandomGenerator>
#include <QTimer>

#include "framework/text.h"

namespace corvane {
namespace {

constexpr int kMaxRedirects = 5;
constexpr int kOk = 200;
// Without a bound the loop would write all that a fast host sends in one turn.
constexpr qint64 kReadAhead = 256 * 1024;

// An unpredictable name in the same folder.
QString NameBeside(const QString& file) {
  return file + QLatin1Char('.') + QString::number(QRandomGenerator::system()->generate64(), 36);
}

class Transfer : public HttpTransfer {
 public:
  Transfer(HttpRequest request, HttpClient::Done done)
      : myRequest(std::move(request)),
        myDone(std::move(done)),
        myFile(NameBeside(myRequest.file)) {}
  ~Transfer() override { Forget(); }
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  void Start(QNetworkAccessManager& manager, const QByteArray& userAgent);

 private:
  // Reads what has arrived. Returns whether the request goes on; if not, this object may be gone.
  bool Read();
  void Finish();
  void Fail();
  void Report(const HttpReply& reply);
  void Forget();

  // Creates the file if it is not there yet; returns false on failure.
  bool HasFile();
  bool PutFileInPlace();
  bool IsToFile() const { return !myRequest.file.isEmpty(); }
  // The Content-Length of the reply; -1 if there is none.
  std::int64_t Announced() const;

  const HttpRequest myRequest;
  const HttpClient::Done myDone;
  QFile myFile;  // under its random name, open until it is renamed
  QByteArray myBody;
  std::int64_t myReceived = 0;
  QNetworkReply* myReply = nullptr;
  QTimer myTimer;
};

void Transfer::Start(QNetworkAccessManager& manager, const QByteArray& userAgent) {
  QNetworkRequest get(myRequest.url);
  get.setHeader(QNetworkRequest::UserAgentHeader, userAgent);
  get.setRawHeader("Accept-Encoding", "identity");
  get.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                   QNetworkRequest::NoLessSafeRedirectPolicy);
  get.setMaximumRedirectsAllowed(kMaxRedirects);
  get.setTransferTimeout(static_cast<int>(myRequest.silence.count()));
  get.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
  get.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
  get.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
  get.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);

  QObject::connect(&myTimer, &QTimer::timeout, &myTimer, [this] { Fail(); });
  myTimer.setSingleShot(true);
  const QString scheme = myRequest.url.scheme();
  const bool isWeb = scheme == QLatin1String("http") || scheme == QLatin1String("https");
  if (!isWeb) {
    myTimer.start(0);
    return;
  }
  // Coarse timers end many requests in one turn of the loop, and a little too early.
  myTimer.setTimerType(Qt::PreciseTimer);
  myTimer.start(myRequest.timeout);
  myReply = manager.get(get);
  myReply->setReadBufferSize(kReadAhead);
  QObject::connect(myReply, &QNetworkReply::readyRead, &myTimer, [this] { Read(); });
  QObject::connect(
      myReply, &QNetworkReply::finished, &myTimer, [this] { Finish(); }, Qt::QueuedConnection);
}

std::int64_t Transfer::Announced() const {
  // Qt 6.4 may put the lengths of earlier redirects in front: "0, 7".
  const QByteArray lengths = myReply->rawHeader("Content-Length");
  bool isNumber = false;
  const qint64 last = lengths.mid(lengths.lastIndexOf(',') + 1).toLongLong(&isNumber);
  return isNumber ? last : -1;
}

bool Transfer::Read() {
  if (myReply == nullptr) return false;
  const QByteArray bytes = myReply->readAll();
  myReceived += bytes.size();
  if (myReceived > myRequest.maxBytes || Announced() > myRequest.maxBytes) {
    Fail();
    return false;
  }
  if (!IsToFile()) {
    myBody += bytes;
  } else if (!HasFile() || myFile.write(bytes) != bytes.size()) {
    Fail();
    return false;
  }
  if (!myRequest.progress || bytes.isEmpty()) return true;
  const QPointer<QTimer> own(&myTimer);
  const auto progress = myRequest.progress;
  progress(myReceived, Announced());
  return own != nullptr;
}

void Transfer::Finish() {
  if (!Read()) return;
  const int status = myReply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
  // Qt 6.4 reports no error if the end of the connection has arrived before it first reads.
  const bool isWhole = Announced() < 0 || Announced() == myReceived;
  if (myReply->error() != QNetworkReply::NoError || status != kOk || !isWhole) return Fail();
  if (IsToFile() && (myReceived == 0 || !PutFileInPlace())) return Fail();
  Report({true, std::exchange(myBody, {})});
}

bool Transfer::HasFile() {
  return myFile.isOpen() || myFile.open(QIODevice::WriteOnly | QIODevice::NewOnly);
}

bool Transfer::PutFileInPlace() {
  if (!HasFile() || !myFile.flush()) return false;
  myFile.close();
  // Replaces a link of that name instead of writing through it.
  std::error_code error;
  std::filesystem::rename(myFile.fileName().toStdU16String(), myRequest.file.toStdU16String(),
                          error);
  if (error) myFile.remove();
  return !error;
}

void Transfer::Fail() {
  Report({});
}

void Transfer::Report(const HttpReply& reply) {
  Forget();
  // The callee may destroy this transfer, and the function with it.
  const HttpClient::Done done = myDone;
  done(reply);
}

// Drops the reply, so that it raises nothing more, and the unfinished file.
void Transfer::Forget() {
  myTimer.stop();
  if (myFile.isOpen()) myFile.remove();
  QNetworkReply* reply = std::exchange(myReply, nullptr);
  if (reply == nullptr) return;
  reply->disconnect(&myTimer);
  reply->abort();
  reply->deleteLater();
}

}  // namespace

QUrl AddressBelow(std::string_view base, std::string_view path) {
  base = Trimmed(base);
  while (base.ends_with('/'))
    base.remove_suffix(1);
  return QUrl(DisplayText(base) + DisplayText(path));
}

HttpClient::HttpClient(const std::string& userAgent, std::size_t managers)
    : myUserAgent(QByteArray::fromStdString(userAgent)), myManagers(managers) {
  for (auto& manager : myManagers) {
    manager = std::make_unique<QNetworkAccessManager>();
    manager->setProxy(QNetworkProxy::NoProxy);
  }
}

HttpClient::~HttpClient() = default;

std::unique_ptr<HttpTransfer> HttpClient::Get(HttpRequest request, Done done) {
  auto transfer = std::make_unique<Transfer>(std::move(request), std::move(done));
  transfer->Start(*myManagers[myNext++ % myManagers.size()], myUserAgent);
  return transfer;
}

}  // namespace corvane
