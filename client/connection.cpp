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
// The first bytes of a TLS alert (RFC 8446).
constexpr std::string_view kTlsAlert = "\x15\x03";

}  // namespace

Connection::Connection(Timing timing) : myTiming(timing) {
  // Coarse timers may have more than the whole time left, and the seconds are shown.
  myRetry.setTimerType(Qt::PreciseTimer);
  for (QTimer* timer : {&myRetry, &myLoginTimeout, &myReadAgain})
    timer->setSingleShot(true);
  myRefresh.setInterval(myTiming.refreshInterval);

  const auto on = [](QTimer& timer, auto act) {
    QObject::connect(&timer, &QTimer::timeout, &timer, act);
  };
  on(myRetry, [this] { Start(); });
  on(myRefresh, [this] { Refresh(); });
  on(myReadAgain, [this] { Read(); });
  on(myLoginTimeout, [this] { EndSession(Ending::Cause::Silent, QStringLiteral("no answer")); });
}

Connection::~Connection() {
  if (mySocket) mySocket->disconnect();
}

void Connection::Open(Destination destination) {
  Close();
  myMembers.Expire();
  myMembers.Clear();
  myDestination = std::move(destination);
  myWasOnline = false;
  Start();
}

void Connection::Close() {
  if (const auto session = mySession) {
    session->Leave();
  } else if (myState == State::Waiting) {
    myRetry.stop();
    myMembers.Clear();
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
  MakeSocket();
  const auto session = mySession = std::make_shared<Session>(myDestination.account, myMembers,
                                                             static_cast<SessionEvents&>(*this));
  myHasHeard = false;
  myLoginTimeout.start(myTiming.greetingTimeout);
  Change(State::Connecting);
  // A handler may have ended the session or opened another.
  if (session != mySession) return;
  if (!myDestination.tls) {
    mySocket->connectToHost(myDestination.host, myDestination.port);
  } else if (QSslSocket::supportsSsl()) {
    ConnectTls(static_cast<QSslSocket&>(*mySocket), myDestination.host, myDestination.port,
               *myDestination.tls);
  } else {
    EndSession(Ending::Cause::NoTls);
    return;
  }
  // Qt's encrypted sockets take it only from here on.
  if (session == mySession) mySocket->setReadBufferSize(kBufferBytes);
}

void Connection::MakeSocket() {
  if (mySocket) {
    // It may be the one whose event leads here.
    mySocket->disconnect();
    mySocket->abort();
    mySocket.release()->deleteLater();
  }
  const auto on = [](auto& socket, auto event, auto act) {
    QObject::connect(&socket, event, &socket, act);
  };
  if (myDestination.tls) {
    auto socket = std::make_unique<QSslSocket>();
    on(*socket, &QSslSocket::encrypted, [this] { Connected(); });
    mySocket = std::move(socket);
  } else {
    mySocket = std::make_unique<QTcpSocket>();
    on(*mySocket, &QTcpSocket::connected, [this] { Connected(); });
  }
  mySocket->setProxy(QNetworkProxy::NoProxy);
  on(*mySocket, &QTcpSocket::readyRead, [this] { Read(); });
  on(*mySocket, &QTcpSocket::errorOccurred, [this] {
    // The last bytes may hold the reason.
    const auto session = mySession;
    while (session && session == mySession && myState != State::Connecting &&
           mySocket->bytesAvailable() > 0)
      Read();
    if (session == mySession) EndSession(Ending::Cause::Lost, mySocket->errorString());
  });
}

void Connection::Connected() {
  const auto session = mySession;
  if (!session) return;
  if (const auto fault = FaultOfTls()) {
    session->End(*fault);
    return;
  }
  mySocket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
  Change(State::LoggingIn);
}

void Connection::Read() {
  const auto session = mySession;
  // Nothing is heard from a server, nor answered, before it is trusted.
  if (!session || myState == State::Connecting) return;
  std::array<char, kReadBytes> piece;
  const qint64 count = mySocket->read(piece.data(), piece.size());
  if (count <= 0) return;
  const std::string_view bytes(piece.data(), static_cast<std::size_t>(count));
  if (!std::exchange(myHasHeard, true)) {
    if (!myDestination.tls && bytes.starts_with(kTlsAlert)) {
      EndSession(Ending::Cause::ExpectsTls);
      return;
    }
    myLoginTimeout.start(myTiming.loginTimeout);
  }
  session->Receive(bytes, Clock::now());
  // A handler may have ended the session or opened another.
  if (session != mySession) return;
  Flush();
  if (mySocket->bytesAvailable() > 0) myReadAgain.start(0);
}

void Connection::Flush() {
  if (!mySession) return;
  const std::string output = mySession->TakeOutput();
  if (!output.empty()) mySocket->write(output.data(), static_cast<qint64>(output.size()));
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
  const auto session = mySession;
  if (!session) return;
  Ending ending{cause, TextFromDisplay(text)};
  if (myState == State::Connecting) {
    ending.cause = Ending::Cause::Unreachable;
    ending = FaultOfTls().value_or(ending);
  } else if (!myDestination.tls && !myHasHeard) {
    ending.cause = Ending::Cause::NotGreeted;
  }
  session->End(ending);
}

std::optional<Ending> Connection::FaultOfTls() const {
  if (!myDestination.tls) return {};
  return TlsFault(static_cast<const QSslSocket&>(*mySocket), *myDestination.tls);
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
  if (ending.cause == Ending::Cause::Left && myState != State::Connecting) {
    mySocket->disconnectFromHost();
  } else {
    mySocket->abort();
  }
  myMembers.Expire();
  if (ending.cause == Ending::Cause::Left) myMembers.Clear();
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
