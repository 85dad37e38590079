#pragma once

#include <optional>

#include <QByteArray>
#include <QLocalSocket>
#include <QString>

namespace corvane::ctl {

// A blocking connection to the server: sends lines and receives lines.
class ServerLink {
 public:
  // Connects to the folder's server. Returns false if there is none, if it does not accept within
  // `timeout` ms, or if it is another user's.
  bool Open(const QString& dataFolder, int timeout);
  void Send(const QByteArray& line);
  // The next line. None if the server disconnects, is silent for `timeout` ms (-1: no limit), or
  // sends a line of over 64 MiB.
  std::optional<QByteArray> Receive(int timeout);

 private:
  QLocalSocket mySocket;
};

}  // namespace corvane::ctl
