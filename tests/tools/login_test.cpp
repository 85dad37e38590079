#include "tools/swarm/login.h"

#include <gtest/gtest.h>

#include "tools/swarm/wire.h"

namespace corvane::swarm {
namespace {

class LoginTest : public testing::Test {
 protected:
  // What the login sends upon a message, as one frame's command and payload.
  std::string AnswerTo(std::int32_t command, std::string_view payload) {
    std::string output;
    myState = myLogin.Receive(command, payload, output);
    std::string answer;
    FrameCutter().Feed(output, [&](std::int32_t sent, std::string_view data) {
      answer += std::to_string(sent) + ":" + std::string(data);
    });
    return answer;
  }

  Login myLogin{"Demo", "digest", "Aldric"};
  Login::State myState = Login::State::Waiting;
};

TEST_F(LoginTest, SendsItsStepsOneAfterTheOther) {
  for (int connection = 0; connection < 2; ++connection) {
    myLogin.Restart();
    EXPECT_EQ(AnswerTo(1, "Network"), "1:Demo");
    EXPECT_EQ(AnswerTo(2, "OK"), "2:digest");
    EXPECT_EQ(AnswerTo(5, "Brenna|1,2,0,4,0,0"), "") << "another member's news";
    EXPECT_EQ(AnswerTo(3, "OK"), "3:Aldric");
    EXPECT_EQ(myState, Login::State::Waiting);
    EXPECT_EQ(AnswerTo(4, "OK"), "");
    EXPECT_EQ(myState, Login::State::LoggedIn);
  }
}

TEST_F(LoginTest, TellsWhatWasRefused) {
  const char* const refusals[] = {"the network 'Demo' was answered 'FAIL'",
                                  "the password of 'Demo' was answered 'FAIL'",
                                  "the user name 'Aldric' was answered 'FAIL'"};
  for (std::int32_t step = 0; step < 3; ++step) {
    myLogin.Restart();
    AnswerTo(1, "Network");
    for (std::int32_t passed = 0; passed < step; ++passed)
      AnswerTo(2 + passed, "OK");
    EXPECT_EQ(AnswerTo(2 + step, "FAIL"), "");
    EXPECT_EQ(myState, Login::State::Refused);
    EXPECT_EQ(myLogin.Refusal(), refusals[step]);
  }
  myLogin.Restart();
  AnswerTo(command::kBanned, "Go away");
  EXPECT_EQ(myState, Login::State::Refused);
}

}  // namespace
}  // namespace corvane::swarm
