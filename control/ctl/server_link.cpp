#include "control/ctl/server_link.h"

#include "control/ctl/server_owner.h"
#include "platform/local_socket_name.h"

namespace corvane::ctl {
namespace {

// Several times the server's largest answer. Another program may answer in its place.
constexpr qint64 kMaxAnswer = qint64{64} << 20;

}  // namespace

void ServerLink::Connect(const QString& dataFolder) {
  mySocket.connectToServer(LocalSocketName(dataFolder, kServerSocket));
}

bool ServerLink::IsOpen(QDeadlineTimer end) {
  const auto left = static_cast<int>(end.remainingTime());
  const bool isOpen = mySocket.waitForConnected(left) && IsServerOfThisUser(mySocket);
  if (!isOpen) mySocket.abort();
  return isOpen;
}

void ServerLink::Send(const QByteArray& line) {
  mySocket.write(line + '\n');
  mySocket.flush();
}

std::optional<QByteArray> ServerLink::Receive(QDeadlineTimer end) {
  while (!mySocket.canReadLine()) {
    if (mySocket.bytesAvailable() > kMaxAnswer) return std::nullopt;
    const auto left = static_cast<int>(end.remainingTime());
    if (!mySocket.waitForReadyRead(left)) return std::nullopt;
  }
  return mySocket.readLine().trimmed();
}

}  // namespace corvane::ctl
