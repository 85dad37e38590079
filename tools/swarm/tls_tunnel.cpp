#include "tools/swarm/tls_tunnel.h"

#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <utility>

namespace corvane::swarm {
namespace {

constexpr int kBacklog = 4096;
// On their way in one direction. A slow reader slows its sender down, as without the tunnel.
constexpr qint64 kBufferBytes = 64 << 10;

qint64 Unsent(const QTcpSocket& socket) {
  const auto* encrypted = qobject_cast<const QSslSocket*>(&socket);
  return socket.bytesToWrite() + (encrypted ? encrypted->encryptedBytesToWrite() : 0);
}

void Pump(QTcpSocket& from, QTcpSocket& to) {
  while (from.bytesAvailable() > 0 && Unsent(to) < kBufferBytes)
    to.write(from.read(kBufferBytes));
}

}  // namespace

TlsTunnel::TlsTunnel(const sockaddr_in& server, client::Tls tls)
    : myServer(ntohl(server.sin_addr.s_addr)),
      myPort(ntohs(server.sin_port)),
      myTls(std::move(tls)) {
  myListener.setListenBacklogSize(kBacklog);
  myListener.setMaxPendingConnections(kBacklog);
  if (!myListener.listen(QHostAddress::LocalHost))
    throw std::runtime_error(myListener.errorString().toStdString());
  QObject::connect(&myListener, &QTcpServer::newConnection, &myListener, [this] {
    while (QTcpSocket* near = myListener.nextPendingConnection())
      Carry(*near);
  });
  myListener.moveToThread(&myThread);
  // Signals are for the pool's thread.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  myThread.start();
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TlsTunnel::~TlsTunnel() {
  // Its sockets are children of the listener, which ends on its thread.
  QMetaObject::invokeMethod(
      &myListener,
      [this] {
        qDeleteAll(myListener.findChildren<QTcpSocket*>(Qt::FindDirectChildrenOnly));
        myListener.close();
        myListener.moveToThread(myThread.thread());
      },
      Qt::BlockingQueuedConnection);
  myThread.quit();
  myThread.wait();
}

sockaddr_in TlsTunnel::Address() const {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(myListener.serverPort());
  return address;
}

void TlsTunnel::Carry(QTcpSocket& near) {
  auto* const far = new QSslSocket(&near);
  const auto on = [far](auto& socket, auto event, auto act) {
    QObject::connect(&socket, event, far, act);
  };
  const auto refuse = [&near](const QString& why) {
    std::fprintf(stderr, "corvane-swarm: %s\n", why.toUtf8().constData());
    near.abort();
  };
  QObject::connect(far, &QSslSocket::encrypted, far, [this, &near, far, on, refuse] {
    if (const auto fault = client::TlsFault(*far, myTls)) {
      refuse(fault->Explanation());
      return;
    }
    const auto send = [&near, far] { Pump(near, *far); };
    const auto receive = [&near, far] { Pump(*far, near); };
    on(near, &QTcpSocket::readyRead, send);
    on(*far, &QSslSocket::encryptedBytesWritten, send);
    on(*far, &QTcpSocket::readyRead, receive);
    on(near, &QTcpSocket::bytesWritten, receive);
    send();
    receive();
  });
  on(*far, &QTcpSocket::errorOccurred, [this, &near, far, refuse] {
    if (!far->isEncrypted()) {
      const auto fault = client::TlsFault(*far, myTls);
      refuse(fault ? fault->Explanation() : far->errorString());
      return;
    }
    if (far->bytesAvailable() > 0) near.write(far->readAll());
    near.disconnectFromHost();
  });
  QObject::connect(&near, &QTcpSocket::disconnected, &near, &QObject::deleteLater);
  near.setSocketOption(QTcpSocket::LowDelayOption, 1);
  if (myServer.isLoopback()) far->bind(near.peerAddress());
  client::ConnectTls(*far, myServer.toString(), myPort, myTls);
  far->setSocketOption(QTcpSocket::LowDelayOption, 1);
  for (QTcpSocket* socket : {&near, static_cast<QTcpSocket*>(far)})
    socket->setReadBufferSize(kBufferBytes);
}

}  // namespace corvane::swarm
