#include "net/easy_tcp_socket.h"

#include <array>

#include <QtEndian>

#include "framework/exceptions.h"
#include "net/frame.h"
#include "net/os_socket.h"
#include "tests/net/recording_server.h"
#include "tests/support/socket_errors.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using testing::ElementsAre;

// More than the system's buffers hold.
std::string Large() {
  std::string large;
  large.resize(12'000'000, 'x');
  return large;
}

// Appends the bytes that can be read; returns whether the end was reached.
bool ReadsToTheEnd(os::SocketHandle peer, std::string& received) {
  std::vector<char> buffer(100'000);
  os::Transfer part;
  do {
    part = os::Receive(peer, buffer);
    received.append(buffer.data(), part.bytes);
  } while (part.bytes > 0);
  return part.error == 0;
}

using EasyTCPSocketTest = ConnectionTest;

TEST_F(EasyTCPSocketTest, MessagesArriveWholeFromAnyPieces) {
  const std::vector<WireMessage> messages = {{4, "a"}, {-7, "\xC3\xA9"}, {0, ""}, {1, "x\0y"s}};
  std::string stream;
  std::vector<std::string> expected;
  for (const WireMessage& message : messages) {
    stream += WireBytes(message.command, message.payload);
    expected.push_back(Name() + " " + std::to_string(message.command) + " " + message.payload);
  }
  for (const std::size_t piece : {stream.size(), std::size_t{1}}) {
    server->log.clear();
    for (std::size_t at = 0; at < stream.size(); at += piece) {
      client->SendBytes(stream.substr(at, piece));
      PumpFor(1ms);
    }
    EXPECT_TRUE(Logs(expected.size()));
    EXPECT_EQ(server->log, expected);
  }
}

TEST_F(EasyTCPSocketTest, LargeMessagesAndLongBurstsArriveInOrderBeforeTheEnd) {
  const std::string large(3'000'000, 'L');
  std::string burst = WireBytes(1, large);
  std::vector<std::string> expected = {Name() + " 1 " + large};
  for (int i = 0; i < 10'000; ++i) {
    burst += WireBytes(2, std::to_string(i));
    expected.push_back(Name() + " 2 " + std::to_string(i));
  }
  expected.push_back(Name() + " error " + std::to_string(kConnectionReset));
  client->SendBytes(burst);
  client->Close();
  EXPECT_TRUE(Logs(expected.size()));
  EXPECT_TRUE(server->log == expected);
}

TEST_F(EasyTCPSocketTest, ConnectionsTakeTurnsMessageByMessage) {
  const auto second = Connect();
  const std::string other = std::to_string(server->Active(1)->Number());
  server->log.clear();
  std::string burst;
  for (int i = 0; i < 3; ++i)
    burst += WireBytes(1, std::to_string(i));
  // Held until both bursts are there: the turns must not depend on the times of arrival.
  socket->HoldMessages(true);
  server->Active(1)->HoldMessages(true);
  client->SendBytes(burst);
  second->SendBytes(burst);
  PumpFor(100ms);
  EXPECT_THAT(server->log, ElementsAre());
  socket->HoldMessages(false);
  server->Active(1)->HoldMessages(false);
  EXPECT_TRUE(Logs(6));
  EXPECT_THAT(server->log, ElementsAre(Name() + " 1 0", other + " 1 0", Name() + " 1 1",
                                       other + " 1 1", Name() + " 1 2", other + " 1 2"));
}

// The header is enough, also for a length above the limit.
TEST_F(EasyTCPSocketTest, InvalidLengthClosesWithoutAnError) {
  for (const std::int32_t length : {0, 1, 7, -1, INT32_MIN, 101}) {
    const auto hostile = Connect();
    server->Active(1)->LimitMessages(100);
    server->log.clear();
    std::string bytes = WireBytes(1, "not delivered: cut in the same read");
    bytes += WireBytes(2, "");
    qToBigEndian(length, bytes.data() + bytes.size() - kFrameHeaderBytes);
    hostile->SendBytes(bytes);
    EXPECT_TRUE(hostile->WasClosedByServer()) << length;
    EXPECT_THAT(server->log, ElementsAre()) << length;
    EXPECT_TRUE(PumpUntil([this] { return server->ActiveCount() == 1; }));
  }
}

TEST_F(EasyTCPSocketTest, AnnouncedLengthCostsNothingUntilItsBytesCome) {
  client->SendBytes("\x7F\xFF\xFF\xFF\0\0\0\1"s + std::string(100'000, 'x'));
  EXPECT_TRUE(PumpUntil([this] { return loop.Memory().input.InUse() >= 100'000; }));
  PumpFor(10ms);
  EXPECT_LT(loop.Memory().input.InUse(), 1'000'000U);
  client->Abort();
  EXPECT_TRUE(Logs(1));
  EXPECT_THAT(server->log, ElementsAre(Name() + " error " + std::to_string(kConnectionReset)));
  EXPECT_EQ(loop.Memory().input.InUse(), 0U);
}

// The message is larger than the system's buffers. The peer polls by itself: Wine does not report
// unread bytes once both sides have ended.
TEST_F(EasyTCPSocketTest, PeerThatEndedItsSendingGetsAllThatIsWritten) {
  const std::string large = Large();
  const os::SocketHandle other = ConnectSilent();
  server->Active(1)->whenReceived = [&](std::int32_t, std::string_view) {
    server->Active(1)->SendMessage(2, large);
  };
  os::Send(other, WireBytes(1, ""));
  os::EndSending(other);
  std::string received;
  EXPECT_TRUE(PumpUntil([&] { return ReadsToTheEnd(other, received); }));
  EXPECT_TRUE(received == WireBytes(2, large));
  EXPECT_EQ(loop.Memory().output.InUse(), 0U);
  os::CloseSocket(other);
}

TEST_F(EasyTCPSocketTest, EndOfTheLoopWaitsForPeersThatRead) {
  const std::array peers = {ConnectSilent(), ConnectSilent()};
  for (std::size_t i = 1; i < 3; ++i)
    server->Active(i)->SendMessage(1, Large());
  const std::size_t all = kFrameHeaderBytes + Large().size();
  std::array<std::size_t, 2> received = {};
  const auto readAll = [&](std::size_t index) {
    std::vector<char> buffer(100'000);
    os::Transfer part;
    do {
      part = os::Receive(peers[index], buffer);
      received[index] += part.bytes;
    } while (received[index] < all && (part.bytes > 0 || os::WouldBlock(part.error)));
  };
  std::thread reading([&] {
    readAll(0);
    std::this_thread::sleep_for(1s);
    readAll(1);
  });
  loop.Finish();
  EXPECT_EQ(server->Handle(), os::kNoSocket);
  reading.join();
  EXPECT_EQ(received[0], all);
  EXPECT_LT(received[1], all) << "waited for a peer that takes nothing for a second";
  std::ranges::for_each(peers, os::CloseSocket);
}

TEST_F(EasyTCPSocketTest, FailedSendDoesNotLoseWhatThePeerSentBefore) {
  const os::SocketHandle peer = ConnectSilent();
  const auto connection = server->Active(1);
  server->log.clear();
  os::Send(peer, WireBytes(1, "last words"));
  os::CloseSocket(peer);
  // The first send is answered by a reset; the next one fails.
  do {
    FlushNow(loop);
    connection->SendMessage(5, "");
  } while (connection->BytesLeftToSend() > 0);
  ASSERT_TRUE(Logs(2));
  EXPECT_THAT(server->log[0], testing::EndsWith(" 1 last words"));
  EXPECT_THAT(server->log[1], testing::HasSubstr(" error "));
}

TEST_F(EasyTCPSocketTest, DelayedMessagesWaitAndAreDroppedOnceThePeerIsGone) {
  constexpr auto kDelay = 300ms;
  std::vector<PollLoop::Clock::time_point> times;
  socket->whenReceived = [&](std::int32_t, std::string_view) {
    times.push_back(PollLoop::Clock::now());
    socket->DelayMessages(kDelay);
    socket->DelayMessages(kDelay / 2);
  };
  const auto second = Connect();
  server->log.clear();
  std::string burst;
  for (int i = 0; i < 100; ++i)
    burst += WireBytes(1, "");
  client->SendBytes(burst);
  ASSERT_TRUE(PumpUntil([&] { return times.size() == 1; }));
  second->Send(2, "");
  ASSERT_TRUE(PumpUntil([&] { return times.size() == 2; }));
  EXPECT_GE(times[1] - times[0], kDelay);
  EXPECT_THAT(server->log[1], testing::EndsWith(" 2 ")) << "the other one waited as well";
  client->Close();
  EXPECT_TRUE(PumpUntil([this] { return server->ActiveCount() == 1; }));
  EXPECT_GT(times.size(), 3U) << "dropped at once";
  EXPECT_LT(times.size(), 50U);
  EXPECT_EQ(server->log.back(), Name() + " error " + std::to_string(kConnectionReset));
}

TEST_F(EasyTCPSocketTest, AnswersReachAPeerThatIsClosedRightAfter) {
  socket->whenReceived = [this](std::int32_t, std::string_view) {
    socket->SendMessage(9, "last words");
    socket->Close();
    socket->SendMessage(9, "to nobody");
  };
  client->SendBytes(WireBytes(1, "") + WireBytes(1, "not delivered"));
  EXPECT_EQ(client->Receive(), (WireMessage{9, "last words"}));
  EXPECT_TRUE(client->WasClosedByServer());
  EXPECT_EQ(server->log.size(), 1U);
}

TEST_F(EasyTCPSocketTest, HandlerWithoutMemoryEndsItsConnectionOnly) {
  const auto outOfMemory = [](auto&&...) { throw std::bad_alloc(); };
  const auto second = Connect();
  const auto ends = server->Active(1);
  server->log.clear();
  socket->whenReceived = outOfMemory;
  ends->whenEnded = outOfMemory;
  client->Send(1, "");
  second->Abort();
  EXPECT_TRUE(client->WasClosedByServer());
  EXPECT_TRUE(PumpUntil([this] { return server->ActiveCount() == 0; }));
  EXPECT_THAT(server->log, testing::UnorderedElementsAre(
                               Name() + " 1 ", Name() + " error " + std::to_string(kNoBuffers),
                               testing::HasSubstr(" error ")));

  server->hasNoMemory = true;
  server->Listen();
  EXPECT_TRUE(PumpUntil([this] { return !server->errors.empty(); }));
  server->hasNoMemory = false;
  const auto third = Connect();
  EXPECT_EQ(server->ActiveCount(), 1U);
  EXPECT_THAT(server->errors, ElementsAre(kNoBuffers));
}

TEST_F(EasyTCPSocketTest, RawReadingAndWritingIsRefused) {
  const auto refuses = [](const std::string& method) {
    return testing::ThrowsMessage<RuntimeException>("You cannot call " + method +
                                                    " on an EasyTCPSocket directly.");
  };
  EXPECT_THAT([this] { socket->Read(1); }, refuses("Read"));
  EXPECT_THAT([this] { socket->ReadAll(); }, refuses("ReadAll"));
  EXPECT_THAT([this] { socket->Write("x"); }, refuses("Write"));
}

TEST_F(EasyTCPSocketTest, WaitTakesItsMessageAndDropsTheOthers) {
  client->SendBytes(WireBytes(7, "lost") + WireBytes(5, "awaited") + WireBytes(8, "kept"));
  EXPECT_EQ(socket->WaitForMessage(5, 10), "awaited");
  EXPECT_TRUE(Logs(1));
  EXPECT_THAT(server->log, ElementsAre(Name() + " 8 kept"));

  EXPECT_EQ(socket->WaitForMessage(5, 0), "");
  client->Close();
  EXPECT_EQ(socket->WaitForMessage(5, 10), "");
  EXPECT_FALSE(socket->IsConnected());
}

TEST_F(EasyTCPSocketTest, WaitInsideAHandlerServesTheOthersOnly) {
  const auto second = Connect();
  const std::string other = std::to_string(server->Active(1)->Number());
  server->log.clear();
  std::string answer;
  socket->whenReceived = [&](std::int32_t command, std::string_view data) {
    if (command != 1) return;
    answer = socket->WaitForMessage(5, 10);
    server->log.push_back("answered " + std::string(data));
  };
  server->Active(1)->whenReceived = [&](std::int32_t, std::string_view) {
    client->SendBytes(WireBytes(5, "late"));
  };
  client->SendBytes(WireBytes(1, "first") + WireBytes(2, "queued before"));
  second->SendBytes(WireBytes(3, ""));
  EXPECT_TRUE(Logs(4));
  EXPECT_EQ(answer, "late");
  EXPECT_THAT(server->log, ElementsAre(Name() + " 1 first", other + " 3 ", "answered first",
                                       Name() + " 2 queued before"));
}

TEST_F(EasyTCPSocketTest, ConnectsByItself) {
  std::vector<std::string> log;
  const auto own = std::make_shared<RecordingSocket>(loop, log, 1);
  own->Address = "127.0.0.1";
  own->Port = server->Port();
  own->Connect();
  EXPECT_FALSE(own->IsConnected());
  EXPECT_TRUE(own->WaitForConnection(10));
  own->SendMessage(3, "hello");
  EXPECT_TRUE(Logs(2));
  EXPECT_THAT(log, ElementsAre("1 connected"));
  EXPECT_THAT(server->log.back(), testing::EndsWith(" 3 hello"));

  server->Close();
  own->Connect();
  EXPECT_FALSE(own->WaitForConnection(10));
  EXPECT_TRUE(PumpUntil([&] { return log.size() > 1; }));
  EXPECT_THAT(log.back(), "1 error " + std::to_string(kConnectionRefused));
}

}  // namespace
}  // namespace corvane
