#include "client/connection.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QNetworkProxy>

#include "framework/text.h"

namespace corvane::client {
namespace {

// Read per turn of the loop, and buffered for the next ones: some thousand records.
constexpr qint64 kReadBytes = 32 << 10;
constexpr qint64 kBufferBytes = 256 << 10;

}  // namespace

Connection::Connection(Timing timing) : myTiming(timing) {
  mySocket.setProxy(QNetworkProxy::NoProxy);
  mySocket.setReadBufferSize(kBufferBytes);
  for (QTimer* timer : {&myRetry, &myLoginTimeout, &myReadAgain})
    timer->setSingleShot(true);
  myRefresh.setInterval(myTiming.refreshInterval);
  myLoginTimeout.setInterval(myTiming.loginTimeout);

  QObject::connect(&mySocket, &QTcpSocket::connected, &mySocket, [this] {
    mySocket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    Change(State::LoggingIn);
  });
  QObject::connect(&mySocket, &QTcpSocket::readyRead, &mySocket, [this] { Read(); });
  QObject::connect(&mySocket, &QTcpSocket::errorOccurred, &mySocket, [this] {
    // The last bytes may hold the reason.
    while (mySession && mySocket.bytesAvailable() > 0)
      Read();
    EndSession(myState == State::Connecting ? Ending::Cause::Unreachable : Ending::Cause::Lost,
               mySocket.errorString());
  });
  QObject::connect(&myRetry, &QTimer::timeout, &mySocket, [this] { Start(); });
  QObject::connect(&myRefresh, &QTimer::timeout, &mySocket, [this] { Refresh(); });
  QObject::connect(&myReadAgain, &QTimer::timeout, &mySocket, [this] { Read(); });
  QObject::connect(&myLoginTimeout, &QTimer::timeout, &mySocket,
                   [this] { EndSession(Ending::Cause::Silent); });
}

Connection::~Connection() {
  mySocket.disconnect();
}

void Connection::Open(Destination destination) {
  Close();
  myDestination = std::move(destination);
  myWasOnline = false;
  Start();
}

void Connection::Close() {
  if (const auto session = mySession) {
    session->Leave();
  } else if (myState == State::Waiting) {
    myRetry.stop();
    Change(State::Offline);
  }
}

void Connection::RetryNow() {
  if (myState == State::Waiting) Start();
}

std::chrono::milliseconds Connection::RetryIn() const {
  return std::max(std::chrono::milliseconds(0), myRetry.remainingTimeAsDuration());
}

void Connection::Start() {
  myRetry.stop();
  mySocket.abort();
  mySession = std::make_shared<Session>(myDestination.account, myMembers,
                                        static_cast<SessionEvents&>(*this));
  myLoginTimeout.start();
  Change(State::Connecting);
  if (mySession) mySocket.connectToHost(myDestination.host, myDestination.port);
}

void Connection::Read() {
  const auto session = mySession;
  if (!session) return;
  std::array<char, kReadBytes> piece;
  const qint64 count = mySocket.read(piece.data(), piece.size());
  if (count <= 0) return;
  session->Receive({piece.data(), static_cast<std::size_t>(count)}, Clock::now());
  // A handler may have ended the session or opened another.
  if (session != mySession) return;
  Flush();
  if (mySocket.bytesAvailable() > 0) myReadAgain.start(0);
}

void Connection::Flush() {
  if (!mySession) return;
  const std::string output = mySession->TakeOutput();
  if (!output.empty()) mySocket.write(output.data(), static_cast<qint64>(output.size()));
}

void Connection::Refresh() {
  if (!mySession) return;
  if (mySession->AwaitsList()) {
    EndSession(Ending::Cause::Silent);
    return;
  }
  mySession->AskForMembers();
  Flush();
}

void Connection::EndSession(Ending::Cause cause, const QString& text) {
  if (const auto session = mySession) session->End({cause, TextFromDisplay(text)});
}

void Connection::Change(State state) {
  myState = state;
  StateChanged();
}

void Connection::LoggedIn() {
  myLoginTimeout.stop();
  myWasOnline = true;
  myRetries = 0;
  mySession->AskForMembers();
  myRefresh.start();
  Change(State::Online);
}

void Connection::Listed(bool isAdministrator) {
  if (std::exchange(myIsAdministrator, isAdministrator) != isAdministrator) StateChanged();
}

void Connection::Said(std::string_view text) {
  if (MessageReceived) MessageReceived(text);
}

void Connection::BansListed(const BanList& bans) {
  BansReceived(bans);
}

void Connection::Ended(const Ending& ending) {
  Flush();
  mySession.reset();
  for (QTimer* timer : {&myRefresh, &myLoginTimeout, &myReadAgain})
    timer->stop();
  if (ending.cause == Ending::Cause::Left) {
    mySocket.disconnectFromHost();
  } else {
    mySocket.abort();
  }
  myMembers.Clear();
  myIsAdministrator = false;

  const bool reconnects = myWasOnline && ending.AllowsReconnect();
  if (reconnects) {
    const auto pause = myTiming.firstDelay * (1 << std::min(myRetries++, 10));
    myRetry.start(std::min(pause, myTiming.maxDelay));
  }
  myState = reconnects ? State::Waiting : State::Offline;
  SessionEnded(ending);
  StateChanged();
}

}  // namespace corvane::client
