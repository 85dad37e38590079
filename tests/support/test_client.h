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
#include "net/poll_loop.h"

namespace corvane {

// Runs Qt's loop until the condition holds, for ten seconds at most. Returns whether it does.
bool PumpUntil(const std::function<bool()>& condition);

// Sends all written bytes that the system takes.
inline void FlushNow(PollLoop& loop) {
  loop.WaitUntil([] { return true; }, PollLoop::Clock::now() + std::chrono::hours(1));
}

// Runs Qt's loop for this time. For events that must not happen.
void PumpFor(std::chrono::milliseconds duration);

struct WireMessage {
  std::int32_t command = 0;
  std::string payload;

  bool operator==(const WireMessage&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const WireMessage& message);

// The bytes of a message, encoded without the code under test.
std::string WireBytes(std::int32_t command, std::string_view payload);

// The 16 bytes that a client sends for a password.
std::string PasswordDigest(std::string_view password);

// A connected peer that reads nothing. The caller closes it.
os::SocketHandle SilentPeer(std::int32_t port);

// A client of the server, on Qt's sockets. Runs Qt's loop while it waits.
class TestClient {
 public:
  // Connects to the port on 127.0.0.1, from that or another loopback address.
  explicit TestClient(std::int32_t port, const char* from = "127.0.0.1");

  void SendBytes(std::string_view bytes);
  void Send(std::int32_t command, std::string_view payload) {
    SendBytes(WireBytes(command, payload));
  }

  // The next message; none if the server ends the connection or nothing comes.
  std::optional<WireMessage> Receive();

  // Sends the three steps after the greeting. Returns whether each was answered "OK".
  bool Login(std::string_view network, std::string_view password, std::string_view user);

  // Sends a request and returns the messages before its answer.
  std::vector<WireMessage> Drain();

  // Reads everything without running Qt's loop. Returns the number of bytes.
  std::size_t DropWhatCame();

  // Whether nothing arrives within 100 ms.
  bool HearsNothing();

  bool IsClosed() const { return mySocket.state() == QAbstractSocket::UnconnectedState; }
  bool WasClosedByServer();
  void Close();
  // Half-closes the connection; it still reads.
  void EndSending();
  // Resets the connection if bytes are unread or unsent.
  void Abort() { mySocket.abort(); }

 private:
  QTcpSocket mySocket;
};

}  // namespace corvane
