#include "control/control_connection.h"

#include <chrono>
#include <utility>

#include "control/answers.h"

namespace corvane {
namespace {

constexpr qint64 kMaxRequest = qint64{1} << 20;  // bytes, without the line end
constexpr qint64 kMaxUnread = qint64{1} << 20;
constexpr std::chrono::seconds kLastAnswerTimeout(1);  // of a last answer

}  // namespace

ControlConnection::ControlConnection(QLocalSocket* socket, QObject* parent,
                                     std::chrono::milliseconds idleTimeout)
    : QObject(parent),
      mySocket(*socket),
      myIdleTimeout(idleTimeout),
      myGathering([this] { SendGathered(); }, Gathering::First::Waits) {
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
  // Some may have come already.
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
  // A pipe may have brought more than was to be kept, and the line's end in it.
  const QByteArray line = mySocket.readLine(kMaxRequest + 1);
  if (!line.endsWith('\n')) {
    return AnswerAndClose(
        RefusalLine("a request of more than 1 MiB; expected is one JSON object "
                    "in a line"));
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
  mySocket.flush();  // as far as it goes without waiting
}

void ControlConnection::Answer(const QByteArray& line) {
  myAwaitsAnswer = false;
  myIdle.start(myIdleTimeout);
  Send(line);
  ScheduleRequest();
}

void ControlConnection::AnswerAndClose(const QByteArray& line) {
  Send(line);
  // Nothing more is taken. Ended at once, the client might not get to read the answer.
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
  myGathering.Note();
}

}  // namespace corvane
