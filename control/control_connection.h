#pragma once

#include <chrono>
#include <functional>

#include <QByteArray>
#include <QLocalSocket>
#include <QTimer>

#include "framework/gathering.h"

namespace corvane {

// One client of the local socket: takes its requests, a line each, one a turn of Qt's loop, so that
// the server goes on between them. Deletes itself when the client has gone.
//
// Limits: a request of 1 MiB; a client that leaves more than 1 MiB unread has no further request
// taken, and none of the lines that it follows is kept for it: it is dropped. So is one that does
// nothing for half a minute, unless it follows.
class ControlConnection : public QObject {
 public:
  // Takes over the socket.
  ControlConnection(QLocalSocket* socket, QObject* parent,
                    std::chrono::milliseconds idleTimeout = std::chrono::seconds(30));
  ~ControlConnection() override;

  // Event: a request, which is to be answered once, now or later. No other is taken until then.
  std::function<void(ControlConnection&, const QByteArray& line)> Requested;

  void Answer(const QByteArray& line);
  // The same for the last answer: a second later the client is let go.
  void AnswerAndClose(const QByteArray& line);
  // From now on the client is sent lines without asking.
  void StartFollowing();
  void SendFollowed(const QByteArray& line);

 private:
  void ScheduleRequest();
  void TakeRequest();
  bool IsBehind() const;
  void Send(const QByteArray& line);
  void SendGathered();

  QLocalSocket& mySocket;
  const std::chrono::milliseconds myIdleTimeout;
  QTimer myIdle;
  bool myIsScheduled = false;
  bool myAwaitsAnswer = false;
  bool myFollows = false;
  // Lines that are followed go together a moment later: a log may have thousands a second, and each
  // by itself costs a system call and wakes its reader.
  QByteArray myGathered;
  Gathering myGathering;
};

}  // namespace corvane
