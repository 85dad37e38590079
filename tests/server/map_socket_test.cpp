#include "server/map_socket.h"

#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "framework/exceptions.h"
#include "tests/support/test_server.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MapSocketTest : public testing::Test {
 protected:
  MapSocketTest() {
    for (const char* name : {"Ann", "Bob", "Eve"}) {
      clients.push_back(std::make_unique<TestClient>(server.Port()));
      EXPECT_TRUE(clients.back()->LogIn(name[0] == 'E' ? "B" : "A", "secret", name));
    }
    server.status.clear();
  }

  TestServer server;
  NetworkRef a = server.AddNetwork("A");
  NetworkRef b = server.AddNetwork("B");
  std::vector<std::unique_ptr<TestClient>> clients;
};

TEST_F(MapSocketTest, MessageGoesToOneNetworkOrToAll) {
  server.listener->BroadcastMessage("", "(All Networks)");
  server.listener->BroadcastMessage("one", "b");
  server.listener->BroadcastMessage("all", "(All Networks)");
  server.listener->BroadcastMessage("none", "(all networks)");
  EXPECT_THAT(clients[0]->Drain(), ElementsAre(WireMessage{998, "all"}));
  EXPECT_THAT(clients[1]->Drain(), ElementsAre(WireMessage{998, "all"}));
  EXPECT_THAT(clients[2]->Drain(), ElementsAre(WireMessage{998, "one"}, WireMessage{998, "all"}));
}

TEST_F(MapSocketTest, MessageEndsAtAConnectionWithoutANetwork) {
  TestClient waiting(server.Port());
  EXPECT_TRUE(waiting.Receive());
  clients.push_back(std::make_unique<TestClient>(server.Port()));
  EXPECT_TRUE(clients.back()->LogIn("A", "secret", "Zoe"));
  EXPECT_THROW(server.listener->BroadcastMessage("x", "(All Networks)"), NilObjectException);
  EXPECT_THROW(server.listener->BroadcastMessage("x", "A"), NilObjectException);
  EXPECT_EQ(clients[0]->Drain().size(), 2U);
  EXPECT_THAT(clients[3]->Drain(), IsEmpty());
  EXPECT_THAT(server.uncaught, IsEmpty());

  AdminsTable(server.database).Add("Ann", "127.0.0.1", "A");
  clients[0]->Send(12, "x");
  EXPECT_TRUE(PumpUntil([this] { return !server.uncaught.empty(); }));
  EXPECT_THAT(server.uncaught, ElementsAre("NilObjectException"));

  server.listener->KickUser("Ann", "A", "skips who has no network");
  EXPECT_EQ(server.status.back(), "Zoe Kicked: skips who has no network");
}

TEST_F(MapSocketTest, RemovedNetworkSaysGoodbyeAndIsFoundNoMore) {
  server.listener->RemoveNetwork(std::make_shared<ServerNetworks>("A", "", 1, true));
  EXPECT_THAT(clients[0]->Drain(), IsEmpty());
  server.listener->RemoveNetwork(a);
  EXPECT_EQ(server.listener->FindNetwork("A"), nullptr);
  const WireMessage goodbye{998, "This network has been removed from the server."};
  EXPECT_EQ(clients[0]->Receive(), goodbye);
  EXPECT_EQ(clients[0]->Receive(), (WireMessage{999, "BYE"}));
  EXPECT_EQ(clients[1]->Receive(), goodbye);
  EXPECT_EQ(clients[1]->Receive(), (WireMessage{999, "BYE"}));
  EXPECT_THAT(clients[2]->Drain(), IsEmpty());
  EXPECT_EQ(server.ActiveCount(), 3U);

  // Who stays keeps the entry and goes on being relayed in it.
  clients[0]->Send(4, "1,1,1,1,0,0");
  EXPECT_EQ(clients[1]->Receive(), (WireMessage{5, "Ann|1,1,1,1,0,0"}));
  clients[0]->Close();
  EXPECT_TRUE(PumpUntil([this] { return a->CurrentUsers == 1; }));
}

TEST_F(MapSocketTest, MembersAreWalkedInTheOrderInWhichTheyConnected) {
  clients.push_back(std::make_unique<TestClient>(server.Port()));
  clients.push_back(std::make_unique<TestClient>(server.Port()));
  EXPECT_TRUE(clients[4]->LogIn("A", "secret", "Later"));
  EXPECT_TRUE(clients[3]->LogIn("A", "secret", "Earlier"));
  EXPECT_EQ(server.Fault(), "");
  clients[0]->Send(5, "");
  EXPECT_THAT(clients[0]->Drain(),
              ElementsAre(WireMessage{5, "Bob|0,0,0,00,0"}, WireMessage{5, "Earlier|0,0,0,00,0"},
                          WireMessage{5, "Later|0,0,0,00,0"}));
}

TEST_F(MapSocketTest, ClosedListenerKeepsItsSessionsUntilItIsGone) {
  server.listener->Close();
  clients[0]->Send(9, "");
  EXPECT_EQ(clients[0]->Receive(), (WireMessage{9, "0"}));
  clients[1]->Close();
  EXPECT_TRUE(PumpUntil([this] { return a->CurrentUsers == 1; }));
  EXPECT_EQ(server.events.back(), "out Bob");
  clients[0]->Send(9, "");
  server.listener.reset();
  EXPECT_TRUE(clients[0]->WasClosedByServer());
}

}  // namespace
}  // namespace corvane
