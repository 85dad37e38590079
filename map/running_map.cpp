#include "map/running_map.h"

#include <chrono>

#include <QDir>
#include <QLocalSocket>

#include "framework/text.h"
#include "platform/foreground.h"
#include "platform/local_socket_name.h"

namespace corvane::map {
namespace {

// Ends a text, since paths may hold any other character.
constexpr char kEnd = '\0';
constexpr char kConfirmed[] = "taken";
constexpr std::chrono::seconds kTakeInterval(5);

}  // namespace

RunningMap::RunningMap(const QString& dataFolder)
    : myLock(QDir(dataFolder).absoluteFilePath(QStringLiteral("corvane-map.lock"))),
      myName(LocalSocketName(dataFolder, kMapSocket)) {
  // The lock of a process that has ended counts as stale without this.
  myLock.setStaleLockTime(0);
  myServer.setSocketOptions(QLocalServer::UserAccessOption);
  myServer.setMaxPendingConnections(kMaxClients);
  QObject::connect(&myServer, &QLocalServer::newConnection, &myServer, [this] { Accept(); });
  QObject::connect(&myRetry, &QTimer::timeout, &myServer, [this] { Take(); });
  myRetry.start(kTakeInterval);
  Take();
}

void RunningMap::Take() {
  if (myServer.isListening() || (!myLock.isLocked() && !myLock.tryLock())) return;
  // Replaces the socket of a map that crashed.
  myServer.listen(myName);
}

void RunningMap::Accept() {
  while (QLocalSocket* client = myServer.nextPendingConnection()) {
    client->setReadBufferSize(kMaxBytes);
    QObject::connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
    if (myServer.findChildren<QLocalSocket*>().size() > kMaxClients) {
      client->abort();
      client->deleteLater();
      continue;
    }
    QObject::connect(client, &QLocalSocket::readyRead, client, [this, client] { Read(*client); });
    QTimer::singleShot(kMaxTime, client, &QObject::deleteLater);
    Read(*client);
  }
}

void RunningMap::Read(QLocalSocket& client) const {
  const QByteArray bytes = client.peek(kMaxBytes);
  const qsizetype end = bytes.indexOf(kEnd);
  if (end < 0) {
    if (bytes.size() == kMaxBytes) client.abort();
    return;
  }
  client.readAll();
  QObject::disconnect(&client, &QLocalSocket::readyRead, nullptr, nullptr);
  client.write(kConfirmed);
  client.disconnectFromServer();
  if (PlaceReceived) PlaceReceived(DisplayText(bytes.first(end).toStdString()));
}

bool RunningMap::HandOver(const QString& dataFolder, const QString& place) {
  QLocalSocket socket;
  socket.connectToServer(LocalSocketName(dataFolder, kMapSocket));
  if (!socket.waitForConnected(kMaxTime)) return false;
  LetOthersComeToFront();
  socket.write(place.toUtf8() + kEnd);
  while (socket.bytesAvailable() < qsizetype{sizeof kConfirmed - 1}) {
    if (!socket.waitForReadyRead(kMaxTime)) return false;
  }
  return socket.readAll() == kConfirmed;
}

}  // namespace corvane::map
