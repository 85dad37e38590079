#include "server/map_socket.h"

#include "framework/exceptions.h"
#include "tests/server/session_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using MapSocketTest = UsersTest;

TEST_F(MapSocketTest, MessageEndsAtAConnectionWithoutANetwork) {
  server.listener->BroadcastMessage("none", "(all networks)");
  const auto waiting = Greeted();
  const auto zoe = LoggedIn("Zoe");
  EXPECT_THROW(server.listener->BroadcastMessage("x", "(All Networks)"), NilObjectException);
  EXPECT_THROW(server.listener->BroadcastMessage("x", "a"), NilObjectException);
  EXPECT_EQ(ann->Drain().size(), 2U);
  EXPECT_EQ(eve->Drain().size(), 1U);
  EXPECT_THAT(zoe->Drain(), IsEmpty());
  EXPECT_THAT(server.uncaught, IsEmpty());

  EXPECT_TRUE(AdminsTable(server.database).Add("Ann", "127.0.0.1", "A"));
  ann->Send(12, "x");
  EXPECT_TRUE(PumpUntil([this] { return !server.uncaught.empty(); }));
  EXPECT_THAT(server.uncaught, ElementsAre("NilObjectException"));

  server.listener->KickUser("Ann", "A", "skips sessions without a network");
  EXPECT_EQ(server.status.back(), "Zoe Kicked: skips sessions without a network");
}

TEST_F(MapSocketTest, RemovedNetworkSaysGoodbyeAndIsFoundNoMore) {
  server.listener->RemoveNetwork(std::make_shared<ServerNetworks>("A", "", 1, true));
  EXPECT_THAT(ann->Drain(), IsEmpty());
  server.listener->RemoveNetwork(a);
  EXPECT_EQ(server.listener->FindNetwork("A"), nullptr);
  const WireMessage goodbye{998, "This network has been removed from the server."};
  for (const auto* member : {&ann, &bob}) {
    EXPECT_EQ((*member)->Receive(), goodbye);
    EXPECT_EQ((*member)->Receive(), (WireMessage{999, "BYE"}));
  }
  EXPECT_THAT(eve->Drain(), IsEmpty());
  EXPECT_EQ(server.ActiveCount(), 3U);

  // Members that stay keep the entry, and their reports are still relayed.
  ann->Send(4, "1,1,1,1,0,0");
  EXPECT_EQ(bob->Receive(), (WireMessage{5, "Ann|1,1,1,1,0,0"}));
  ann->Close();
  EXPECT_TRUE(PumpUntil([this] { return a->CurrentUsers == 1; }));
}

TEST_F(MapSocketTest, MembersAreListedInTheOrderOfTheirConnections) {
  TestClient earlier(server.Port());
  TestClient later(server.Port());
  EXPECT_TRUE(later.Login("A", "secret", "Later"));
  EXPECT_TRUE(earlier.Login("A", "secret", "Earlier"));
  EXPECT_EQ(server.Fault(), "");
  ann->Send(5, "");
  EXPECT_THAT(ann->Drain(),
              ElementsAre(WireMessage{5, "Bob|0,0,0,00,0"}, WireMessage{5, "Earlier|0,0,0,00,0"},
                          WireMessage{5, "Later|0,0,0,00,0"}));
}

TEST_F(MapSocketTest, ClosedListenerKeepsItsSessionsUntilItIsDestroyed) {
  server.listener->Close();
  ann->Send(9, "");
  EXPECT_EQ(ann->Receive(), (WireMessage{9, "0"}));
  bob->Close();
  EXPECT_TRUE(PumpUntil([this] { return a->CurrentUsers == 1; }));
  EXPECT_EQ(server.events.back(), "out Bob");
  ann->Send(9, "");
  server.listener.reset();
  EXPECT_TRUE(ann->WasClosedByServer());
}

}  // namespace
}  // namespace corvane
