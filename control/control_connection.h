#pragma once

#include <chrono>
#include <functional>

#include <QByteArray>
#include <QLocalSocket>
#include <QTimer>

#include "framework/coalescing_timer.h"

namespace corvane {

// One client of the local socket. Takes one request (a line) per turn of Qt's loop, so the server
// goes on in between. Owns the socket; deletes itself when the client disconnects.
//
// Limits: a request has at most 1 MiB. While a client leaves more than 1 MiB unread, no further
// request is taken; if it follows the log, it is disconnected. A client that does not follow is
// disconnected once it has been idle for 30 s.
class ControlConnection : public QObject {
 public:
  // Takes over the socket.
  ControlConnection(QLocalSocket* socket, QObject* parent,
                    std::chrono::milliseconds idleTimeout = std::chrono::seconds(30));
  ~ControlConnection() override;

  // Event: a request. Answer it exactly once, at once or later; the next request waits for the
  // answer.
  std::function<void(ControlConnection&, const QByteArray& line)> Requested;

  void Answer(const QByteArray& line);
  // The same, and closes the connection a second later.
  void AnswerAndClose(const QByteArray& line);
  // From now on the client gets the lines of SendFollowed.
  void StartFollowing();
  void SendFollowed(const QByteArray& line);
  // Whether it has left more than 1 MiB unread.
  bool IsBehind() const;

 private:
  void ScheduleRequest();
  void TakeRequest();
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
