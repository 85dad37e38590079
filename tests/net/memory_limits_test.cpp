
#include "net/os_socket.h"
#include "tests/net/recording_server.h"
#include "tests/support/socket_errors.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using testing::ElementsAre;

// At most 300,000 bytes of input for all connections together.
class InputLimitTest : public ConnectionTest {
 protected:
  InputLimitTest() : ConnectionTest({.input = 300'000}) {}
};

TEST_F(InputLimitTest, OnlyTheConnectionThatHoldsMostFails) {
  const auto second = Connect();
  const auto third = Connect();
  server->log.clear();
  const std::string beginning = "\x7F\xFF\xFF\xFF\0\0\0\1"s;
  second->SendBytes(beginning + std::string(250'000, 'x'));
  third->SendBytes(beginning + std::string(30'000, 'x'));
  ASSERT_TRUE(PumpUntil([this] { return loop.Memory().input.InUse() >= 280'000; }));
  std::string whole;
  for (int i = 0; i < 20; ++i) {
    third->SendBytes(std::string(2'000, 'x'));
    whole += "1";
    client->Send(1, whole);
    ASSERT_TRUE(PumpUntil([&] { return server->log.size() >= whole.size(); }));
  }
  EXPECT_EQ(server->ActiveCount(), 2U);
  EXPECT_TRUE(second->WasClosedByServer());
  EXPECT_EQ(
      std::ranges::count(server->log, std::to_string(server->Active(0)->Number()) + " 1 " + whole),
      1);
}

class OutputLimitTest : public ConnectionTest {
 protected:
  OutputLimitTest()
      : ConnectionTest({.connectionOutput = kBound, .output = 1'500'000, .drain = 50ms}) {}

  static constexpr std::size_t kBound = 1'000'000;

  // Writes to the connection until so many bytes are left that the system does not take.
  void Fill(RecordingSocket& connection, std::size_t bytes) {
    const std::string message(10'000, 'x');
    while (connection.IsConnected() && connection.BytesLeftToSend() < bytes) {
      connection.SendMessage(1, message);
    }
  }
};

TEST_F(OutputLimitTest, PeerThatNeverReadsFailsInThePassAfter) {
  const auto silent = Connect();
  const auto other = server->Active(1);
  server->log.clear();
  Fill(*socket, kBound);
  EXPECT_TRUE(socket->IsConnected());
  socket->SendMessage(1, "one more");
  EXPECT_FALSE(socket->IsConnected());
  Fill(*other, kBound);
  EXPECT_TRUE(other->IsConnected());
  other->SendPackets(CopyToBlock(loop.Memory().output, WireBytes(1, "one more")));
  EXPECT_FALSE(other->IsConnected());
  EXPECT_THAT(server->log, ElementsAre()) << "raised inside a send";
  EXPECT_EQ(loop.Memory().output.InUse(), 0U);
  const std::string error = " error " + std::to_string(kNoBuffers);
  EXPECT_TRUE(Logs(2));
  EXPECT_THAT(server->log, ElementsAre(Name() + error, std::to_string(other->Number()) + error));
  EXPECT_EQ(server->ActiveCount(), 0U);
}

TEST_F(OutputLimitTest, ClosedConnectionWhosePeerNeverReadsIsReleased) {
  const os::SocketHandle silent = ConnectSilent();
  Fill(*server->Active(1), kBound);
  server->Active(1)->Close();
  EXPECT_GT(loop.Memory().output.InUse(), 0U);
  EXPECT_TRUE(PumpUntil([this] { return loop.Memory().output.InUse() == 0; }));
  os::CloseSocket(silent);
}

TEST_F(OutputLimitTest, LargeMessagesDoNotCutOffAPeerThatReads) {
  const std::string large(OutputQueue::kLarge, 'x');
  const SharedBytes packet = CopyToBlock(loop.Memory().output, WireBytes(1, large));
  const int count = 8;
  for (int i = 0; i < count; ++i)
    socket->SendPackets(packet);
  EXPECT_GT(socket->BytesLeftToSend(), kBound);
  socket->SendMessage(2, "small");
  for (int i = 0; i < count; ++i)
    EXPECT_TRUE(client->Receive() == (WireMessage{1, large}));
  EXPECT_TRUE(client->Receive() == (WireMessage{2, "small"}));
}

TEST_F(OutputLimitTest, AnswersOfOneHandlerCountAsOneAndTheNextQuestionWaits) {
  const os::SocketHandle silent = ConnectSilent();
  const auto asked = server->Active(1);
  asked->whenReceived = [&](std::int32_t, std::string_view) {
    Fill(*asked, kBound);
    asked->SendMessage(2, "");
    asked->SendPackets(CopyToBlock(loop.Memory().output, WireBytes(2, "")));
    EXPECT_TRUE(asked->IsConnected());
  };
  server->log.clear();
  os::Send(silent, WireBytes(1, "first") + WireBytes(1, "second"));
  EXPECT_TRUE(Logs(1));
  PumpFor(200ms);
  const std::string name = std::to_string(asked->Number());
  EXPECT_THAT(server->log, ElementsAre(name + " 1 first"));
  std::vector<char> taken(100'000);
  EXPECT_TRUE(PumpUntil([&] {
    os::Receive(silent, taken);
    return server->log.size() == 2;
  }));
  EXPECT_THAT(server->log.back(), name + " 1 second");
  os::CloseSocket(silent);
}

TEST_F(OutputLimitTest, LargestFailsWhenAllTogetherHoldTooMuch) {
  const auto second = Connect();
  Fill(*server->Active(1), 900'000);
  Fill(*socket, 700'000);
  EXPECT_TRUE(socket->IsConnected());
  EXPECT_TRUE(Logs(2));
  EXPECT_THAT(server->log.back(), testing::EndsWith(" error " + std::to_string(kNoBuffers)));
  EXPECT_EQ(server->Active(0), socket);
  EXPECT_EQ(server->ActiveCount(), 1U);
}

class DrainTest : public ConnectionTest {
 protected:
  DrainTest() : ConnectionTest({.drain = kDrain}) {}

  static constexpr auto kDrain = 500ms;
};

TEST_F(DrainTest, ClosedConnectionWhosePeerReadsSlowlyGetsAll) {
  const os::SocketHandle slow = ConnectSilent();
  std::size_t left = 20 * OutputQueue::kLarge;
  server->Active(1)->SendMessage(1, std::string(left - kFrameHeaderBytes, 'x'));
  server->Active(1)->Close();
  std::vector<char> buffer(100'000);
  EXPECT_TRUE(PumpUntil([&] {
    for (int i = 0; i < 10; ++i)
      left -= os::Receive(slow, buffer).bytes;
    PumpFor(kDrain / 5);
    return left == 0;
  }));
  os::CloseSocket(slow);
}

}  // namespace
}  // namespace corvane
