#include "control/control_connection.h"

#include <chrono>
#include <utility>

#include "control/answers.h"

namespace corvane {
namespace {

constexpr qint64 kMaxRequest = qint64{1} << 20;  // bytes, without the line end
constexpr qint64 kMaxUnread = qint64{1} << 20;
constexpr std::chrono::seconds kLastAnswerTimeout(1);

}  // namespace

ControlConnection::ControlConnection(QLocalSocket* socket, QObject* parent,
                                     std::chrono::milliseconds idleTimeout)
    : QObject(parent),
      mySocket(*socket),
      myIdleTimeout(idleTimeout),
      mySending([this] { SendGathered(); }, CoalescingTimer::First::Waits) {
  socket->setParent(this);
  socket->setReadBufferSize(kMaxRequest + 1);
  connect(socket, &QLocalSocket::readyRead, this, &ControlConnection::ScheduleRequest);
  connect(socket, &QLocalSocket::bytesWritten, this, &ControlConnection::ScheduleRequest);
  connect(socket, &QLocalSocket::disconnected, this, &QObject::deleteLater);
  myIdle.setSingleShot(true);
  connect(&myIdle, &QTimer::timeout, this, [this] {
    if (!myAwaitsAnswer && !myFollows) mySocket.abort();
  });
  myIdle.start(myIdleTimeout);
  // Requests may have arrived already.
  ScheduleRequest();
}

ControlConnection::~ControlConnection() {
  SendGathered();
}

void ControlConnection::ScheduleRequest() {
  if (std::exchange(myIsScheduled, true)) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        myIsScheduled = false;
        TakeRequest();
      },
      Qt::QueuedConnection);
}

void ControlConnection::TakeRequest() {
  if (myAwaitsAnswer || IsBehind() || mySocket.state() != QLocalSocket::ConnectedState) return;
  if (!mySocket.canReadLine() && mySocket.bytesAvailable() <= kMaxRequest) return;
  // A pipe may deliver more than the read buffer's size, including the line's end.
  const QByteArray line = mySocket.readLine(kMaxRequest + 1);
  if (!line.endsWith('\n')) {
    return AnswerAndClose(
        RefusalLine("a request of more than 1 MiB; expected one JSON object a line"));
  }
  myIdle.start(myIdleTimeout);
  myAwaitsAnswer = true;
  Requested(*this, line.trimmed());
  ScheduleRequest();
}

bool ControlConnection::IsBehind() const {
  return mySocket.bytesToWrite() + myGathered.size() > kMaxUnread;
}

void ControlConnection::Send(const QByteArray& line) {
  myGathered += line;
  myGathered += '\n';
  SendGathered();
}

void ControlConnection::SendGathered() {
  const QByteArray lines = std::exchange(myGathered, {});
  if (lines.isEmpty() || mySocket.state() != QLocalSocket::ConnectedState) return;
  mySocket.write(lines);
  mySocket.flush();  // does not wait
}

void ControlConnection::Answer(const QByteArray& line) {
  myAwaitsAnswer = false;
  myIdle.start(myIdleTimeout);
  Send(line);
  ScheduleRequest();
}

void ControlConnection::AnswerAndClose(const QByteArray& line) {
  Send(line);
  // No more requests. Closed at once, the client might lose the answer.
  myAwaitsAnswer = true;
  QTimer::singleShot(kLastAnswerTimeout, this, [this] { mySocket.abort(); });
}

void ControlConnection::StartFollowing() {
  myFollows = true;
}

void ControlConnection::SendFollowed(const QByteArray& line) {
  if (!myFollows) return;
  if (IsBehind()) return mySocket.abort();
  myGathered += line;
  myGathered += '\n';
  mySending.Note();
}

}  // namespace corvane
