#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include "control/local_listener.h"

namespace corvane {
namespace {

constexpr int kAcceptBacklog = 50;
constexpr std::chrono::seconds kPause(1);

void CloseDescriptor(int& descriptor) {
  if (descriptor >= 0) close(std::exchange(descriptor, -1));
}

}  // namespace

// Not QLocalServer, which stops listening for good when accept fails.
struct LocalListener::Socket {
  Socket() : listening(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {}
  ~Socket();
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  bool Bind(const QByteArray& file);
  void Serve();
  void Accept();
  int AcceptOne() const;
  void KeepSpare();

  int listening;
  int spare = -1;
  QByteArray bound;  // the socket's file
  std::function<void(QLocalSocket*)> accepted;
  std::unique_ptr<QSocketNotifier> ready;
  QTimer retry;
};

LocalListener::Socket::~Socket() {
  ready.reset();
  if (!bound.isEmpty()) unlink(bound.constData());
  CloseDescriptor(listening);
  CloseDescriptor(spare);
}

bool LocalListener::Socket::Bind(const QByteArray& file) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (static_cast<std::size_t>(file.size()) >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return false;
  }
  std::memcpy(address.sun_path, file.constData(), static_cast<std::size_t>(file.size()));
  unlink(file.constData());
  // The socket's permissions become the file's at bind().
  const bool isBound =
      fchmod(listening, S_IRUSR | S_IWUSR) == 0 &&
      bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  if (isBound) bound = file;
  return isBound && listen(listening, kAcceptBacklog) == 0;
}

void LocalListener::Socket::Serve() {
  KeepSpare();
  retry.setSingleShot(true);
  QObject::connect(&retry, &QTimer::timeout, [this] {
    KeepSpare();
    ready->setEnabled(true);
  });
  ready = std::make_unique<QSocketNotifier>(listening, QSocketNotifier::Read);
  QObject::connect(ready.get(), &QSocketNotifier::activated, [this] { Accept(); });
}

int LocalListener::Socket::AcceptOne() const {
  return accept4(listening, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
}

void LocalListener::Socket::Accept() {
  int client = AcceptOne();
  if (client < 0 && errno != EAGAIN && spare >= 0) {
    CloseDescriptor(spare);
    client = AcceptOne();
  }
  if (client >= 0) {
    auto* const connection = new QLocalSocket;
    connection->setSocketDescriptor(client);
    accepted(connection);
  } else if (errno != EAGAIN) {
    ready->setEnabled(false);
    retry.start(kPause);
  }
  KeepSpare();
}

void LocalListener::Socket::KeepSpare() {
  if (spare < 0) spare = open("/dev/null", O_RDONLY | O_CLOEXEC);
  if (spare < 0) retry.start(kPause);
}

LocalListener::LocalListener() = default;
LocalListener::~LocalListener() = default;

bool LocalListener::Listen(const QString& name) {
  mySocket = std::make_unique<Socket>();
  if (mySocket->listening >= 0 && mySocket->Bind(QFile::encodeName(name))) return true;
  myError = std::strerror(errno);
  return false;
}

void LocalListener::Serve(std::function<void(QLocalSocket*)> accepted) {
  mySocket->accepted = std::move(accepted);
  mySocket->Serve();
}

}  // namespace corvane
