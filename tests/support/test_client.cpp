#include "tests/support/test_client.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QTimer>
#include <QtEndian>

#include "net/os_socket.h"

namespace corvane {
namespace {

constexpr qint64 kPatience = 10'000;  // milliseconds
constexpr std::chrono::milliseconds kTick{2};
constexpr std::int32_t kBye = 999;

}  // namespace

bool PumpUntil(const std::function<bool()>& condition) {
  QElapsedTimer timer;
  timer.start();
  // Sleeps for a tick at most: other threads and programs cause no event here.
  QTimer tick;
  tick.start(kTick);
  while (!condition()) {
    if (timer.hasExpired(kPatience)) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);  // its consequences
  }
  return true;
}

void PumpFor(std::chrono::milliseconds duration) {
  const QDeadlineTimer end(duration);
  PumpUntil([&] { return end.hasExpired(); });
}

os::SocketHandle SilentPeer(std::int32_t port) {
  const os::SocketHandle peer = os::OpenSocket().handle;
  os::Connect(peer, {"127.0.0.1", static_cast<std::uint16_t>(port)});
  return peer;
}

std::ostream& operator<<(std::ostream& stream, const WireMessage& message) {
  return stream << message.command << " \"" << message.payload << '"';
}

std::string WireBytes(std::int32_t command, std::string_view payload) {
  std::string bytes(8, '\0');
  qToBigEndian(static_cast<qint32>(8 + payload.size()), bytes.data());
  qToBigEndian(command, bytes.data() + 4);
  return bytes.append(payload);
}

std::string PasswordDigest(std::string_view password) {
  const QByteArrayView bytes(password.data(), static_cast<qsizetype>(password.size()));
  return QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toStdString();
}

TestClient::TestClient(std::int32_t port, const char* from) {
  mySocket.bind(QHostAddress(QString::fromLatin1(from)));
  mySocket.connectToHost(QHostAddress(QHostAddress::LocalHost), static_cast<quint16>(port));
  PumpUntil([this] { return mySocket.state() != QAbstractSocket::ConnectingState; });
}

void TestClient::SendBytes(std::string_view bytes) {
  mySocket.write(bytes.data(), static_cast<qint64>(bytes.size()));
  mySocket.flush();
}

std::optional<WireMessage> TestClient::Receive() {
  const auto length = [this] { return qFromBigEndian<qint32>(mySocket.peek(4).constData()); };
  const auto isWhole = [&] {
    return mySocket.bytesAvailable() >= 8 && mySocket.bytesAvailable() >= length();
  };
  PumpUntil([&] { return isWhole() || mySocket.state() != QAbstractSocket::ConnectedState; });
  if (!isWhole()) return std::nullopt;
  const QByteArray bytes = mySocket.read(length());
  return WireMessage{qFromBigEndian<qint32>(bytes.constData() + 4), bytes.mid(8).toStdString()};
}

bool TestClient::Login(std::string_view network, std::string_view password, std::string_view user) {
  const std::string digest = PasswordDigest(password);
  if (Receive() != WireMessage{1, "Network"}) return false;
  const std::string_view steps[] = {network, digest, user};
  std::int32_t command = 1;
  for (const std::string_view step : steps) {
    Send(command++, step);
    if (Receive() != WireMessage{command, "OK"}) return false;
  }
  return true;
}

std::vector<WireMessage> TestClient::Drain() {
  Send(kBye, "");
  std::vector<WireMessage> messages;
  for (auto message = Receive(); message && message->command != kBye; message = Receive()) {
    messages.push_back(*message);
  }
  return messages;
}

std::size_t TestClient::DropWhatCame() {
  std::size_t count = 0;
  do {
    count += static_cast<std::size_t>(mySocket.readAll().size());
  } while (mySocket.waitForReadyRead(100));
  return count + static_cast<std::size_t>(mySocket.readAll().size());
}

bool TestClient::HearsNothing() {
  PumpFor(std::chrono::milliseconds(100));
  return mySocket.bytesAvailable() == 0;
}

bool TestClient::WasClosedByServer() {
  return PumpUntil([this] { return IsClosed(); });
}

void TestClient::EndSending() {
  os::EndSending(mySocket.socketDescriptor());
}

void TestClient::Close() {
  mySocket.disconnectFromHost();
  PumpUntil([this] { return IsClosed(); });
}

}  // namespace corvane
