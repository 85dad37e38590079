#include "net/flush_queue.h"

#include <chrono>

#include "tests/net/recording_server.h"
#include "tests/support/flush.h"

namespace corvane {
namespace {

using std::chrono::milliseconds;

// A loop that holds sends for good once it has counted some, and two connections of different
// halves.
class HoldTest : public NetTest {
 protected:
  explicit HoldTest(milliseconds longestHold = std::chrono::hours(1))
      : NetTest({}, {1, -1, 1000, 1000, longestHold}) {
    server->Listen();
    one = Connect();
    other = Connect();
    WriteToBoth("counted");
    EXPECT_EQ(one->Receive(), (WireMessage{7, "counted"}));
    EXPECT_EQ(other->Receive(), (WireMessage{7, "counted"}));
    PumpFor(milliseconds(110));  // the count takes its time
  }

  void WriteToBoth(const std::string& text) {
    server->Active(0)->SendMessage(7, text);
    server->Active(1)->SendMessage(7, text);
  }

  std::unique_ptr<TestClient> one;
  std::unique_ptr<TestClient> other;
};

class ShortHoldTest : public HoldTest {
 protected:
  ShortHoldTest() : HoldTest(milliseconds(5)) {}
};

TEST_F(HoldTest, HalvesTakeTurnsAndWhatIsHeldSharesASend) {
  WriteToBoth("a");
  EXPECT_EQ(one->Receive(), (WireMessage{7, "a"}));
  EXPECT_TRUE(other->HearsNothing());
  WriteToBoth("b");
  EXPECT_EQ(other->Receive(), (WireMessage{7, "a"}));
  EXPECT_EQ(other->Receive(), (WireMessage{7, "b"}));
  EXPECT_TRUE(one->HearsNothing());
  FlushNow(loop);
  EXPECT_EQ(one->Receive(), (WireMessage{7, "b"}));
}

TEST_F(ShortHoldTest, WhatIsHeldLeavesByItselfInTheEnd) {
  for (const char* text : {"a", "b"}) {
    WriteToBoth(text);
    EXPECT_EQ(one->Receive(), (WireMessage{7, text}));
    EXPECT_EQ(other->Receive(), (WireMessage{7, text}));
  }
}

}  // namespace
}  // namespace corvane
