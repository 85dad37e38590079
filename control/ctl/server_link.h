#pragma once

#include <optional>

#include <QByteArray>
#include <QLocalSocket>
#include <QString>

namespace corvane::ctl {

// The way to the server: a line there, lines back. Waits for them.
class ServerLink {
 public:
  // Whether there is a server of this user's that works in the folder.
  bool Open(const QString& dataFolder);
  void Send(const QByteArray& line);
  // The next line; none when the server has gone, says nothing for so long (ms; -1: ever), or
  // does not come to the line's end.
  std::optional<QByteArray> Receive(int timeout);

 private:
  QLocalSocket mySocket;
};

}  // namespace corvane::ctl
