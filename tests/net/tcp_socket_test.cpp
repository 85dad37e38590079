#include "net/tcp_socket.h"

#include <memory>

#include <gtest/gtest.h>

#include "net/poll_loop.h"
#include "tests/support/test_client.h"

namespace corvane {
namespace {

class StreamSocket : public TCPSocket {
 public:
  using TCPSocket::TCPSocket;

  int completed = 0;
  std::size_t sent = 0;
  int errors = 0;

 protected:
  void Event_SendComplete() override { ++completed; }
  void Event_SendProgress(std::size_t bytes, std::size_t /*left*/) override { sent += bytes; }
  void Event_Error() override { ++errors; }
};

// A connection of two plain sockets: one listens for its one peer, the other connects to it.
class TCPSocketTest : public testing::Test {
 protected:
  TCPSocketTest() : loop([] {}) {
    left->Listen();
    right->Address = "127.0.0.1";
    right->Port = os::LocalEndpoint(left->Handle()).port;
    right->Connect();
    PumpUntil([this] { return left->IsConnected() && right->IsConnected(); });
  }

  PollLoop loop;
  std::shared_ptr<StreamSocket> left = std::make_shared<StreamSocket>(loop);
  std::shared_ptr<StreamSocket> right = std::make_shared<StreamSocket>(loop);
};

TEST_F(TCPSocketTest, ReadsWhatWasWritten) {
  const os::Endpoint peer = os::LocalEndpoint(right->Handle());
  EXPECT_EQ(left->PeerName(), "127.0.0.1:" + std::to_string(peer.port));
  right->Write("hello ");
  right->Write("world");
  EXPECT_TRUE(PumpUntil([this] { return left->Lookahead().size() == 11; }));
  EXPECT_EQ(left->Lookahead(), "hello world");
  EXPECT_EQ(left->Read(6), "hello ");
  EXPECT_EQ(left->ReadAll(), "world");
  EXPECT_EQ(left->Read(1), "");
}

TEST_F(TCPSocketTest, ReportsTheProgressOfSending) {
  const std::size_t size = 8'000'000;
  right->Write(std::string(size, 'x'));
  EXPECT_EQ(right->completed, 0);
  std::size_t read = 0;
  EXPECT_TRUE(PumpUntil([&] {
    read += left->ReadAll().size();
    return read == size && right->completed > 0;
  }));
  EXPECT_EQ(right->completed, 1);
  EXPECT_EQ(right->sent, size);
}

TEST_F(TCPSocketTest, ConnectDropsWhatTheLastConnectionHeld) {
  right->Write(std::string(8'000'000, 'x'));
  EXPECT_GT(right->BytesLeftToSend(), 0U);
  right->Connect();
  EXPECT_EQ(right->BytesLeftToSend(), 0U);
}

TEST_F(TCPSocketTest, EndsOnceAndKeepsUnreadInput) {
  right->Write("last");
  right->Disconnect();
  EXPECT_TRUE(PumpUntil([this] { return left->errors > 0; }));
  EXPECT_EQ(left->errors, 1);
  EXPECT_EQ(right->errors, 0) << "its own side closed";
  EXPECT_TRUE(left->ReadError());
  EXPECT_FALSE(left->IsEOF());
  left->Purge();
  EXPECT_TRUE(left->IsEOF());
  left->Write("to nobody");
  EXPECT_EQ(left->BytesLeftToSend(), 0U);
}

}  // namespace
}  // namespace corvane
