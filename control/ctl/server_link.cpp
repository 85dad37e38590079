#include "control/ctl/server_link.h"

#include "control/control_name.h"
#include "control/ctl/server_owner.h"

namespace corvane::ctl {
namespace {

// Several times the server's largest answer: something else may answer.
constexpr qint64 kLongestAnswer = qint64{64} << 20;

}  // namespace

bool ServerLink::Open(const QString& dataFolder) {
  mySocket.connectToServer(ControlName(dataFolder));
  return mySocket.waitForConnected() && IsServerOfThisUser(mySocket);
}

void ServerLink::Send(const QByteArray& line) {
  mySocket.write(line + '\n');
  mySocket.flush();
}

std::optional<QByteArray> ServerLink::Receive(int patience) {
  while (!mySocket.canReadLine()) {
    if (mySocket.bytesAvailable() > kLongestAnswer) return std::nullopt;
    if (!mySocket.waitForReadyRead(patience)) return std::nullopt;
  }
  return mySocket.readLine().trimmed();
}

}  // namespace corvane::ctl
