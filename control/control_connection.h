#pragma once

#include <chrono>
#include <functional>

#include <QByteArray>
#include <QLocalSocket>
#include <QTimer>

#include "framework/coalescing_timer.h"

namespace corvane {

// One client of the local socket. Takes one request, a line, each turn of Qt's loop, so that the
// server goes on in between. Owns the socket; deletes itself when the client disconnects.
//
// Limits: a request has at most 1 MiB. While a client leaves more than 1 MiB unread, no further
// request is taken; if it follows the log, it is dropped. So is a client that sends nothing for
// 30 s, unless it follows.
class ControlConnection : public QObject {
 public:
  // Takes over the socket.
  ControlConnection(QLocalSocket* socket, QObject* parent,
                    std::chrono::milliseconds idleTimeout = std::chrono::seconds(30));
  ~ControlConnection() override;

  // Event: a request. Answer it once, now or later; the next one waits for that.
  std::function<void(ControlConnection&, const QByteArray& line)> Requested;

  void Answer(const QByteArray& line);
  // The same, and closes the connection a second later.
  void AnswerAndClose(const QByteArray& line);
  // From now on the client gets lines without asking.
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
  // Coalesces followed lines: a log may have thousands a second, and each sent by itself costs a
  // system call and wakes its reader.
  QByteArray myGathered;
  CoalescingTimer mySending;
};

}  // namespace corvane
