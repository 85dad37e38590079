#include <chrono>

#include "tests/map/map_fixture.h"
#include "tests/support/false_server.h"

namespace corvane::map {
namespace {

using State = client::Connection::State;

class HostileServerTest : public WindowTest {
 protected:
  // Logs in to a server that sends what the test wants.
  void LoginToFalseServer() {
    Login(server.Port());
    ASSERT_TRUE(server.Accept());
    server.LetIn();
    ASSERT_TRUE(Reaches(State::Online));
  }

  FalseServer server;
};

TEST_F(HostileServerTest, NonsenseEndsTheConnectionWithAClearMessage) {
  for (const std::string& bytes : {std::string("SSH-2.0-OpenSSH_9.2\r\n"), std::string(100, '\0'),
                                   std::string("\x7f\xff\xff\xff") + std::string(90, 'x'),
                                   WireBytes(5, "nonsense"), WireBytes(9, "maybe")}) {
    LoginToFalseServer();
    server.Send(bytes);
    EXPECT_TRUE(Reaches(State::Offline));
    EXPECT_TRUE(Shows("not a Corvane server"));
    EXPECT_TRUE(PumpUntil([&] { return !server.HasClient(); }));
    myWindow->txtMessages->clear();
  }
}

TEST_F(HostileServerTest, TooManyMembersAreDroppedAndTheWindowGoesOn) {
  LoginToFalseServer();
  std::string list;
  for (int i = 0; i < 200'000; ++i)
    list += WireBytes(
        5, "\x01\xE2\x80\xAE" + std::to_string(i) + "|" + std::to_string(i * 2000) + ",-7,1,41,0");
  server.Send(list + WireBytes(9, "0"));
  EXPECT_TRUE(Shows("Not all members are shown"));
  EXPECT_LE(Rows().size(), client::Members::kMaxMembers);
  ASSERT_TRUE(PumpUntil([&] { return server.Unsent() == 0; }));
  myWindow->ShowFacet(1);
  myWindow->map->ShowAll();
  EXPECT_FALSE(Painted().isNull());
  EXPECT_THAT(Rows(), testing::Each(testing::StartsWith("\\x01\\u202e")));
  myWindow->actions->actDisconnect->trigger();
  EXPECT_EQ(State(), State::Offline);
}

TEST_F(HostileServerTest, AFloodOfMessagesKeepsTheLastThousand) {
  LoginToFalseServer();
  std::string flood;
  for (int i = 1; i <= 10'000; ++i)
    flood += WireBytes(998, "line " + std::to_string(i) + "\n" + std::string(50, '\a'));
  server.Send(flood);
  ASSERT_TRUE(Shows("line 10000\\n\\x07"));
  EXPECT_LE(myWindow->txtMessages->blockCount(), MessagesPane::kMaxLines);
}

}  // namespace
}  // namespace corvane::map
