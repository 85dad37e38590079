#include "net/flush_queue.h"

#include <chrono>

#include "tests/net/recording_server.h"
#include "tests/support/flush.h"

namespace corvane {
namespace {

using std::chrono::milliseconds;

// A loop that holds sends once it has counted some, and a connection.
class HoldTest : public NetTest {
 protected:
  explicit HoldTest(milliseconds hold = std::chrono::hours(1))
      : NetTest({}, {1, -1, 1000, 1000, hold}) {
    server->Listen();
    client = Connect();
    Write("counted");
    EXPECT_EQ(client->Receive(), (WireMessage{7, "counted"}));
    PumpFor(milliseconds(110));  // the count takes its time
  }

  void Write(const std::string& text) { server->Active(0)->SendMessage(7, text); }

  std::unique_ptr<TestClient> client;
};

class ShortHoldTest : public HoldTest {
 protected:
  ShortHoldTest() : HoldTest(milliseconds(5)) {}
};

TEST_F(HoldTest, WhatIsHeldWaitsUntilAllIsFlushed) {
  Write("a");
  EXPECT_TRUE(client->HearsNothing());
  Write("b");
  FlushNow(loop);
  EXPECT_EQ(client->Receive(), (WireMessage{7, "a"}));
  EXPECT_EQ(client->Receive(), (WireMessage{7, "b"}));
}

TEST_F(ShortHoldTest, WhatIsHeldLeavesByItselfInTheEnd) {
  for (const char* text : {"a", "b"}) {
    Write(text);
    EXPECT_EQ(client->Receive(), (WireMessage{7, text}));
  }
}

}  // namespace
}  // namespace corvane
