#pragma once

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include <gmock/gmock.h>

#include "net/easy_tcp_socket.h"
#include "net/poll_loop.h"
#include "net/server_socket.h"
#include "tests/support/test_client.h"

namespace corvane {

// A connection that notes its events in a common log: "<number> <event>".
class RecordingSocket : public EasyTCPSocket {
 public:
  RecordingSocket(PollLoop& loop, std::vector<std::string>& log, int number)
      : EasyTCPSocket(loop), myLog(log), myNumber(number) {}

  int Number() const { return myNumber; }
  using EasyTCPSocket::DelayMessages;
  using EasyTCPSocket::HoldMessages;
  using EasyTCPSocket::LimitMessages;

  // Runs inside ReceivedMessage, after the note.
  std::function<void(std::int32_t, std::string_view)> whenReceived;
  // Runs inside Error, after the note.
  std::function<void()> whenEnded;

 protected:
  void Connected() override { Note("connected"); }
  void Error(std::int32_t code) override {
    Note("error " + std::to_string(code));
    if (whenEnded) whenEnded();
    Close();
  }
  void ReceivedMessage(std::int32_t command, std::string_view data) override {
    Note(std::to_string(command) + " " + std::string(data));
    if (whenReceived) whenReceived(command, data);
  }

 private:
  void Note(const std::string& event) { myLog.push_back(std::to_string(myNumber) + " " + event); }

  std::vector<std::string>& myLog;
  int myNumber;
};

// A listener on the loopback address that makes recording sockets, numbered as they are made.
class RecordingServer : public ServerSocket {
 public:
  RecordingServer(PollLoop& loop, std::int32_t minimum, std::int32_t maximum)
      : ServerSocket(loop, minimum, maximum) {
    NetworkInterface = corvane::NetworkInterface{"", "127.0.0.1"};
  }

  std::shared_ptr<RecordingSocket> Active(std::size_t index) const {
    return std::static_pointer_cast<RecordingSocket>(ActiveConnections()->at(index));
  }
  std::size_t ActiveCount() const { return ActiveConnections()->size(); }

  std::vector<std::string> log;
  std::vector<std::int32_t> errors;
  int withoutHeader = 0;
  std::chrono::milliseconds greetingTakes{0};
  int made = 0;
  int asked = 0;
  bool givesNothing = false;
  bool refuses = false;
  bool hasNoMemory = false;

 protected:
  bool Event_Accepted(const os::Endpoint& /*peer*/) override { return !refuses; }
  std::shared_ptr<TCPSocket> Event_AddSocket() override {
    ++asked;
    if (hasNoMemory) throw std::bad_alloc();
    if (givesNothing) return nullptr;
    return std::make_shared<RecordingSocket>(myLoop, log, ++made);
  }
  void Event_Error(std::int32_t code) override { errors.push_back(code); }
  void Event_HeaderMissing(const os::Endpoint& proxy) override {
    EXPECT_EQ(proxy.address, "127.0.0.1");
    ++withoutHeader;
  }
  void Event_HandedOff(const std::shared_ptr<TCPSocket>& /*socket*/) override {
    std::this_thread::sleep_for(greetingTakes);
  }
};

// A loop and a server, closed in the right order.
class NetTest : public testing::Test {
 protected:
  explicit NetTest(ConnectionMemory::Limits limits = {})
      : loop([] { std::rethrow_exception(std::current_exception()); }, limits) {}

  // Returns when the server has connected the client.
  std::unique_ptr<TestClient> Connect() {
    const std::size_t before = server->ActiveCount();
    auto client = std::make_unique<TestClient>(server->Port());
    PumpUntil([&] { return server->ActiveCount() > before; });
    return client;
  }
  // The same for a peer that reads only when the test does.
  os::SocketHandle ConnectSilent() {
    const std::size_t before = server->ActiveCount();
    const os::SocketHandle peer = SilentPeer(server->Port());
    PumpUntil([&] { return server->ActiveCount() > before; });
    return peer;
  }

  // Connects so many peers before the first is accepted; they are closed after the test.
  void Rush(std::size_t count, const std::function<void()>& beforeTheyConnect = {}) {
    std::vector<os::SocketHandle> peers(count);
    std::ranges::generate(peers, [] { return os::OpenSocket().handle; });
    rush.insert(rush.end(), peers.begin(), peers.end());
    if (beforeTheyConnect) beforeTheyConnect();
    for (const os::SocketHandle peer : peers)
      EXPECT_EQ(os::Connect(peer, {"127.0.0.1", static_cast<std::uint16_t>(server->Port())}), 0);
  }
  void TearDown() override { std::ranges::for_each(rush, os::CloseSocket); }

  PollLoop loop;
  std::shared_ptr<RecordingServer> server = std::make_shared<RecordingServer>(loop, 2, 10);
  std::vector<os::SocketHandle> rush;
};

// A listening server with one client.
class ConnectionTest : public NetTest {
 protected:
  explicit ConnectionTest(ConnectionMemory::Limits limits = {}) : NetTest(limits) {
    server->Listen();
    client = Connect();
    socket = server->Active(0);
    server->log.clear();
  }

  bool Logs(std::size_t count) {
    return PumpUntil([&] { return server->log.size() >= count; });
  }
  std::string Name() const { return std::to_string(socket->Number()); }

  std::unique_ptr<TestClient> client;
  std::shared_ptr<RecordingSocket> socket;
};

}  // namespace corvane
