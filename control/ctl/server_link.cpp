#include "control/ctl/server_link.h"

#include "control/ctl/server_owner.h"
#include "platform/local_socket_name.h"

namespace corvane::ctl {
namespace {

// Several times the server's largest answer. Another program may answer in its place.
constexpr qint64 kMaxAnswer = qint64{64} << 20;

}  // namespace

bool ServerLink::Open(const QString& dataFolder, int timeout) {
  mySocket.connectToServer(LocalSocketName(dataFolder, kServerSocket));
  return mySocket.waitForConnected(timeout) && IsServerOfThisUser(mySocket);
}

void ServerLink::Send(const QByteArray& line) {
  mySocket.write(line + '\n');
  mySocket.flush();
}

std::optional<QByteArray> ServerLink::Receive(int timeout) {
  while (!mySocket.canReadLine()) {
    if (mySocket.bytesAvailable() > kMaxAnswer) return std::nullopt;
    if (!mySocket.waitForReadyRead(timeout)) return std::nullopt;
  }
  return mySocket.readLine().trimmed();
}

}  // namespace corvane::ctl
