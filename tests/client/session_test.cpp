#include "client/session.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "client/password_digest.h"
#include "tests/support/test_client.h"

namespace corvane::client {
namespace {

using testing::ElementsAre;
using Cause = Ending::Cause;

// Records the events of a session.
class SessionTest : public testing::Test, public SessionEvents {
 protected:
  void LoggedIn() override { heard.emplace_back("in"); }
  void Listed(bool isAdministrator) override {
    heard.emplace_back(isAdministrator ? "administrator" : "member");
  }
  void Said(std::string_view text) override { heard.push_back("said " + std::string(text)); }
  void BansListed(const BanList& bans) override {
    heard.push_back("bans " + std::to_string(bans.bans.size()));
  }
  void Ended(const Ending& ending) override {
    endings.push_back(ending.cause);
    heard.push_back("ended " + ending.text);
  }

  void Receive(std::int32_t command, std::string_view payload) {
    session.Receive(WireBytes(command, payload), Clock::now());
  }
  void Login() {
    Receive(1, "Network");
    for (const std::int32_t step : {2, 3, 4})
      Receive(step, "OK");
    session.TakeOutput();
    heard.clear();
  }

  Members members;
  Session session{{"Demo", client::PasswordDigest("demo"), "Ann"}, members, *this};
  std::vector<std::string> heard;
  std::vector<Cause> endings;
};

TEST_F(SessionTest, LogsInDespiteOtherMessagesAndLeaves) {
  Receive(1, "Network");
  EXPECT_EQ(session.TakeOutput(), WireBytes(1, "Demo"));
  Receive(5, "Bob|1,2,3,4,0,0");
  Receive(6, "");
  Receive(2, "OK");
  EXPECT_EQ(session.TakeOutput(), WireBytes(2, corvane::PasswordDigest("demo")));
  Receive(998, "Hello");
  Receive(3, "OK");
  EXPECT_EQ(session.TakeOutput(), WireBytes(3, "Ann"));
  session.Send({});
  session.AskForMembers();
  EXPECT_EQ(session.TakeOutput(), "") << "not sent before the login";
  Receive(4, "OK");
  EXPECT_THAT(heard, ElementsAre("said Hello", "in"));
  session.Send({1200, -845, 2, 90, true, false});
  session.Leave();
  EXPECT_EQ(session.TakeOutput(), WireBytes(4, "1200,-845,2,90,1,0") + WireBytes(999, ""));
  EXPECT_THAT(endings, ElementsAre(Cause::Left));
}

TEST_F(SessionTest, TheAnswerAboutRightsEndsTheList) {
  Login();
  Receive(5, "Old|1,2,3,4,0,0");
  session.AskForMembers();
  session.AskForMembers();
  EXPECT_EQ(session.TakeOutput(), WireBytes(5, "") + WireBytes(9, ""));
  Receive(5, "Bob|1,2,3,41,0");
  Receive(5, "ANN|1,2,3,41,0");
  EXPECT_EQ(members.Count(), 2U) << "its own name is not another member";
  Receive(9, "1");
  EXPECT_EQ(members.Count(), 1U);
  EXPECT_NE(members.Find("Bob"), nullptr);
  // Unrequested: changes the rights and not the members.
  Receive(5, "Eve|0,0,0,0,0,0");
  Receive(9, "0");
  ASSERT_EQ(members.Count(), 2U);
  EXPECT_TRUE(members.Find("Eve")->hasPlace) << "it was relayed";
  EXPECT_THAT(heard, ElementsAre("administrator", "member"));
}

// Each ends the session once. Later messages are ignored.
TEST_F(SessionTest, EndsWithAReason) {
  struct Case {
    bool isLoggedIn;
    std::string bytes;
    Cause cause;
  };
  const std::string greeting = WireBytes(1, "Network");
  const std::string longText(10'000, 'x');
  const Case cases[] = {
      {false, WireBytes(997, "Please"), Cause::AddressBanned},
      {false, greeting + WireBytes(2, "FAIL"), Cause::NetworkRefused},
      {false, greeting + WireBytes(2, "OK") + WireBytes(3, "FAIL"), Cause::PasswordRefused},
      {false, greeting + WireBytes(2, "OK") + WireBytes(3, "OK") + WireBytes(4, "FAIL"),
       Cause::UserNameRefused},
      {false, WireBytes(1, "FAIL"), Cause::Malformed},
      {false, greeting + WireBytes(2, "ok"), Cause::Malformed},
      {false, "HTTP/1.1 400 Bad Request\r\n\r\n", Cause::Malformed},
      {false, std::string(8, '\0'), Cause::Malformed},
      {false, WireBytes(996, "out"), Cause::Kicked},
      {true, WireBytes(996, longText), Cause::Kicked},
      {true, WireBytes(997, "spam"), Cause::Banned},
      {true, WireBytes(999, "BYE"), Cause::Dismissed},
      {true, WireBytes(5, "nonsense"), Cause::Malformed},
      {true, WireBytes(9, "yes"), Cause::Malformed},
      {true, "\x7f\xff\xff\xff" + std::string(4, '\0'), Cause::Malformed},
  };
  for (const Case& each : cases) {
    Session fresh({"Demo", "digest", "Ann"}, members, *this);
    if (each.isLoggedIn)
      fresh.Receive(greeting + WireBytes(2, "OK") + WireBytes(3, "OK") + WireBytes(4, "OK"), {});
    endings.clear();
    const std::string late = WireBytes(998, "late") + WireBytes(996, "late");
    fresh.Receive(each.bytes + late, {});
    fresh.Receive(late, {});
    EXPECT_THAT(endings, ElementsAre(each.cause)) << each.bytes;
    EXPECT_LE(heard.back().size(), Session::kMaxTextBytes + 10);
    EXPECT_NE(heard.back(), "said late");
    EXPECT_FALSE(Ending({each.cause, "text"}).Explanation().isEmpty());
    // The server may still hold the name, and a network may be full for a while.
    EXPECT_EQ(Ending({each.cause, ""}).AllowsReconnect(),
              each.cause == Cause::NetworkRefused || each.cause == Cause::UserNameRefused);
  }
}

}  // namespace
}  // namespace corvane::client
