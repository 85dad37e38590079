#include "net/server_socket.h"

#include "tests/net/recording_server.h"
#include "tests/support/socket_errors.h"

namespace corvane {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

class ServerSocketTest : public NetTest {
 protected:
  bool Asked(int count) {
    return PumpUntil([&] { return server->asked >= count; });
  }
  // Connects one more client; returns whether it is served, and not closed at once.
  bool ServesOneMore() {
    const std::size_t before = server->log.size();
    auto client = std::make_unique<TestClient>(server->Port());
    client->Send(1, "");
    PumpUntil([&] { return server->log.size() > before + 1 || client->IsClosed(); });
    if (client->IsClosed()) return false;
    clients.push_back(std::move(client));
    return true;
  }
  void ServeTen() {
    for (int i = 0; i < 10; ++i)
      EXPECT_TRUE(ServesOneMore());
  }

  std::vector<std::unique_ptr<TestClient>> clients;
};

TEST_F(ServerSocketTest, FillsItsPoolAheadAndHandsOutTheNewestFirst) {
  server->SetMaximumSocketsConnected(100);
  server->Listen();
  EXPECT_EQ(server->asked, 0) << "made inside Listen";
  EXPECT_TRUE(Asked(12));
  ServeTen();
  EXPECT_EQ(server->Active(0)->Number(), 12);
  EXPECT_EQ(server->Active(9)->Number(), 3);
  EXPECT_EQ(server->asked, 12) << "two idle ones are enough";
  EXPECT_TRUE(ServesOneMore());
  EXPECT_TRUE(Asked(22));
  EXPECT_EQ(server->asked, 22) << "one below the minimum adds a batch";
}

TEST_F(ServerSocketTest, BudgetClosesTheEleventhUntilAPlaceIsGivenBack) {
  server->Listen();
  ServeTen();
  EXPECT_FALSE(ServesOneMore());
  server->SetMaximumSocketsConnected(100);
  EXPECT_FALSE(ServesOneMore()) << "a new maximum counts from the next Listen";
  EXPECT_THAT(server->errors, ElementsAre());

  const auto snapshot = server->ActiveConnections();
  clients[4]->Close();
  EXPECT_TRUE(PumpUntil([this] { return server->ActiveCount() == 9; }));
  EXPECT_EQ(snapshot->size(), 10U) << "a walk keeps what it started with";
  server->refuses = true;
  EXPECT_FALSE(ServesOneMore());
  server->refuses = false;
  EXPECT_TRUE(ServesOneMore());
  EXPECT_FALSE(ServesOneMore());
}

TEST_F(ServerSocketTest, CloseKeepsConnectionsThatNoLongerCount) {
  server->Listen();
  const auto client = Connect();
  const auto socket = server->Active(0);
  server->StopListening();
  EXPECT_FALSE(server->IsListening());
  EXPECT_NE(server->Handle(), os::kNoSocket);
  EXPECT_EQ(server->ActiveCount(), 1U);
  server->Close();
  EXPECT_EQ(server->ActiveCount(), 0U);
  EXPECT_EQ(server->Handle(), os::kNoSocket);
  socket->SendMessage(1, "still here");
  EXPECT_EQ(client->Receive(), (WireMessage{1, "still here"}));

  server->Listen();
  ServeTen();
  client->Close();
  EXPECT_TRUE(PumpUntil([&] { return !socket->IsConnected(); }));
  EXPECT_FALSE(ServesOneMore()) << "an older listener's connection gave back a place";
}

TEST_F(ServerSocketTest, ListenerMayBeDestroyedWhileTheLoopHasWorkForIt) {
  server->Listen();
  const auto client = Connect();
  server->SetMaximumSocketsConnected(5);
  server.reset();  // the loop, which ends next, holds the last reference
}

TEST_F(ServerSocketTest, AddressInUseOrImpossiblePortIsReportedOnce) {
  server->Listen();
  const auto second = std::make_shared<RecordingServer>(loop, 2, 10);
  second->SetPort(server->Port());
  second->Listen();
  EXPECT_FALSE(second->IsListening());
  EXPECT_EQ(second->Port(), server->Port()) << "the port that was set";
  for (const std::int32_t port : {-1, 65'536}) {
    second->SetPort(port);
    second->Listen();
  }
  second->SetPort(0);
  second->NetworkInterface = corvane::NetworkInterface{"", "203.0.113.1"};
  second->Listen();
  EXPECT_THAT(second->errors,
              ElementsAre(kAddressInUse, kInvalidArgument, kInvalidArgument, kAddressNotAvailable));
}

TEST_F(ServerSocketTest, OthersAreServedBetweenSlowGreetingsOfARush) {
  server->greetingTakes = std::chrono::milliseconds(10);
  server->Listen();
  const auto early = Connect();
  Rush(5);
  early->Send(1, "");
  EXPECT_TRUE(PumpUntil([this] { return server->log.size() == 7; }));
  EXPECT_THAT(server->log.back(), testing::EndsWith(" connected"));
}

TEST_F(ServerSocketTest, CloseEndsConnectionsThatWaitForTheirHandOff) {
  constexpr std::ptrdiff_t kMany = 8;
  server->greetingTakes = std::chrono::milliseconds(20);
  server->Listen();
  Rush(kMany);
  ASSERT_TRUE(PumpUntil([this] { return server->ActiveCount() > 0; }));
  const auto handedOff = static_cast<std::ptrdiff_t>(server->ActiveCount());
  ASSERT_LT(handedOff, kMany);
  server->Close();
  const auto wasEnded = [](os::SocketHandle peer) {
    char byte = 0;
    const os::Transfer received = os::Receive(peer, {&byte, 1});
    return received.error == 0 && received.bytes == 0;
  };
  EXPECT_TRUE(
      PumpUntil([&] { return std::ranges::count_if(rush, wasEnded) == kMany - handedOff; }));
}

TEST_F(ServerSocketTest, ProxysConnectionIsItsClientsInWhateverPiecesTheHeaderComes) {
  server->ProxyAddresses = AddressRanges("127.0.0.1");
  server->Listen();
  const std::string binary = "\r\n\r\n\0\r\nQUIT\n\x21\x11\xFF\xFF\xC0\0\2\x11\x7F\0\0\1\0\2\0\3"s;
  for (const auto& [header, peer] :
       {std::pair{"PROXY TCP6 2001:DB8::17 ::1 443 12000\r\n"s, "[2001:db8::17]:443"s},
        {binary + std::string(0xFFFF - 12, 'x'), "192.0.2.17:2"s},
        {"PROXY UNKNOWN\r\n"s, "127.0.0.1:"s}}) {
    const std::string all = header + WireBytes(1, "hi") + WireBytes(2, "again");
    for (const std::size_t piece : {header.size() / 20 + 1, header.size() - 1, header.size(),
                                    header.size() + 3, all.size()}) {
      server->log.clear();
      TestClient client(server->Port());
      for (std::size_t at = 0; at < all.size(); at += piece) {
        client.SendBytes(all.substr(at, piece));
        PumpFor(std::chrono::milliseconds(1));
      }
      EXPECT_TRUE(PumpUntil([&] { return server->log.size() == 3; })) << piece;
      EXPECT_THAT(server->log,
                  ElementsAre(testing::EndsWith("connected"), testing::EndsWith("1 hi"),
                              testing::EndsWith("2 again")));
      EXPECT_THAT(server->Active(0)->PeerName(), testing::StartsWith(peer));
      client.Close();
      EXPECT_TRUE(PumpUntil([&] { return server->ActiveCount() == 0; }));
    }
  }
  EXPECT_EQ(server->withoutHeader, 0);
}

TEST_F(ServerSocketTest, ProxysConnectionWithoutHeaderIsClosedAndNoObjectSeesIt) {
  server->ProxyAddresses = AddressRanges("127.0.0.1");
  server->HeaderPatience = std::chrono::milliseconds(300);
  server->Listen();
  int closed = 0;
  for (const std::string& bytes :
       {""s, "PROXY TCP4 192.0.2.17 "s, "\r\n\r\n\0\r\nQUIT\n\x20\0\0\1"s, "GET / HTTP/1.1"s,
        "PROXY TCP4 x\r\n"s, WireBytes(1, "x"), std::string(100'000, 'P')}) {
    TestClient client(server->Port());
    client.SendBytes(bytes);
    EXPECT_TRUE(client.WasClosedByServer()) << bytes;
    EXPECT_EQ(server->withoutHeader, ++closed) << bytes;
  }
  TestClient(server->Port()).Close();
  EXPECT_TRUE(PumpUntil([&] { return server->withoutHeader == closed + 1; }));
  EXPECT_THAT(server->log, ElementsAre());

  // Whoever waits when the listener is closed ends with it.
  TestClient last(server->Port());
  last.SendBytes("PROXY");
  PumpFor(std::chrono::milliseconds(20));
  server->Close();
  EXPECT_TRUE(last.WasClosedByServer());
  EXPECT_EQ(server->withoutHeader, closed + 1);
}

TEST_F(ServerSocketTest, ListensAgainWhileOldConnectionsLinger) {
  server->Listen();
  const auto client = Connect();
  // The side that closes first keeps the address busy for a while.
  server->Active(0)->Close();
  EXPECT_TRUE(client->WasClosedByServer());
  server->SetPort(server->Port());
  server->Listen();
  EXPECT_THAT(server->errors, ElementsAre());
  EXPECT_TRUE(ServesOneMore());
}

TEST_F(ServerSocketTest, MinimumTakesPartOnlyAtListen) {
  const auto low = std::make_shared<RecordingServer>(loop, 0, -5);
  EXPECT_EQ(low->MinimumSocketsAvailable(), 1);
  EXPECT_EQ(low->MaximumSocketsConnected(), 1);

  server->SetMinimumSocketsAvailable(0);
  server->SetMaximumSocketsConnected(100);
  server->Listen();
  ServeTen();
  EXPECT_FALSE(ServesOneMore()) << "never refilled with a minimum of 0";
  EXPECT_EQ(server->asked, 10);
}

TEST_F(ServerSocketTest, AddSocketThatGivesNothingIsAskedAgainAtTheNextClient) {
  server->givesNothing = true;
  server->Listen();
  EXPECT_TRUE(Asked(12));
  EXPECT_FALSE(ServesOneMore());
  EXPECT_LE(server->asked, 40) << "asked without end";
  server->givesNothing = false;
  EXPECT_TRUE(ServesOneMore());
}

}  // namespace
}  // namespace corvane
