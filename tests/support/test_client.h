#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <QTcpSocket>

#include "net/os_socket.h"

namespace corvane {

// Runs Qt's loop until the condition holds, for ten seconds at most; whether it does.
bool PumpUntil(const std::function<bool()>& condition);

// Runs Qt's loop for so long: for what must not happen.
void PumpFor(std::chrono::milliseconds duration);

struct WireMessage {
  std::int32_t command = 0;
  std::string payload;

  bool operator==(const WireMessage&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const WireMessage& message);

// The bytes of a message, made without the code under test.
std::string WireBytes(std::int32_t command, std::string_view payload);

// The 16 bytes that a client sends for a password.
std::string PasswordDigest(std::string_view password);

// A peer that is connected to the port and reads nothing; to be closed.
os::SocketHandle SilentPeer(std::int32_t port);

// A client of the server, on the framework's own sockets. Runs Qt's loop while it waits.
class TestClient {
 public:
  // Connects to the port on the loopback address, from that or another one that begins with 127.
  explicit TestClient(std::int32_t port, const char* from = "127.0.0.1");

  void SendBytes(std::string_view bytes);
  void Send(std::int32_t command, std::string_view payload) {
    SendBytes(WireBytes(command, payload));
  }

  // The next message; none when the server ended the connection or nothing comes.
  std::optional<WireMessage> Receive();

  // Walks through the three steps after the greeting; whether each was answered "OK".
  bool LogIn(std::string_view network, std::string_view password, std::string_view user);

  // What has come until the answer to a request of our own, which is not reported.
  std::vector<WireMessage> Drain();

  // Reads all that comes without running Qt's loop; how many bytes it was.
  std::size_t DropWhatCame();

  // Whether nothing comes for a while.
  bool HearsNothing();

  bool IsClosed() const { return mySocket.state() == QAbstractSocket::UnconnectedState; }
  bool WasClosedByServer();
  void Close();
  // Ends the sending, and reads on.
  void EndSending();
  // Ends the connection with bytes unread or unsent, which resets it.
  void Abort() { mySocket.abort(); }

 private:
  QTcpSocket mySocket;
};

}  // namespace corvane
