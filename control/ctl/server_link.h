#pragma once

#include <optional>

#include <QByteArray>
#include <QDeadlineTimer>
#include <QLocalSocket>
#include <QString>

namespace corvane::ctl {

// A blocking connection to the server: sends lines and receives lines.
class ServerLink {
 public:
  // Begins to connect to the folder's server.
  void Connect(const QString& dataFolder);
  // Returns false if there is none, if it does not accept until then, or if it is another user's.
  bool IsOpen(QDeadlineTimer end);
  void Send(const QByteArray& line);
  // The next line. None if the server disconnects, the line is not there by then, or it has over
  // 64 MiB.
  std::optional<QByteArray> Receive(QDeadlineTimer end = QDeadlineTimer::Forever);

 private:
  QLocalSocket mySocket;
};

}  // namespace corvane::ctl
