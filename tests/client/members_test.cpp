#include "client/members.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace corvane::client {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MembersTest : public testing::Test, public MembersWatcher {
 protected:
  MembersTest() { members.Watch(*this); }

  void Added(const Member& member) override { heard.push_back("+" + member.name); }
  void Changed(const Member& member) override { heard.push_back("~" + member.name); }
  void Removed(const Member& member) override { heard.push_back("-" + member.name); }

  std::vector<std::string> Heard() { return std::exchange(heard, {}); }
  void Relay(const std::string& name, std::int32_t x = 0) {
    members.TakeRelay({name, Report{x, 0, 0, 0, false, false}}, Clock::now());
  }
  void List(const std::string& name, std::int32_t x = 0) {
    members.TakeListed({name, Report{x, 0, 0, 0, false, false}}, Clock::now());
  }

  Members members;
  std::vector<std::string> heard;
};

TEST_F(MembersTest, ARelayIsNewsAndAListOnlyIfItDiffers) {
  Relay("Ann", 1);
  EXPECT_THAT(Heard(), ElementsAre("+Ann"));
  const Clock::time_point before = members.Find("ANN")->news;
  List("Ann", 1);
  EXPECT_THAT(Heard(), IsEmpty());
  EXPECT_EQ(members.Find("Ann")->news, before);
  Relay("Ann", 1);
  List("ANN", 2);
  EXPECT_THAT(Heard(), ElementsAre("~Ann", "~ANN"));
  EXPECT_GT(members.Find("Ann")->news, before);
  members.Remove("aNN");
  members.Remove("Ann");
  EXPECT_THAT(Heard(), ElementsAre("-ANN"));
}

TEST_F(MembersTest, HaveAPlaceAfterTheirFirstReport) {
  const auto hasPlace = [&] { return members.Find("Ann")->hasPlace; };
  List("Ann");
  EXPECT_FALSE(hasPlace()) << "a list has zeros for a member without a report";
  List("Ann", 1);
  EXPECT_TRUE(hasPlace());
  List("Ann");
  EXPECT_FALSE(hasPlace()) << "another member of that name";
  Relay("Ann");
  List("Ann");
  EXPECT_TRUE(hasPlace()) << "its place is 0, 0";
}

TEST_F(MembersTest, AListRemovesTheMembersThatItLacks) {
  for (const char* name : {"Ann", "Bob", "Cy"})
    Relay(name);
  Heard();
  members.BeginList();
  List("Ann");
  Relay("Cy");
  Relay("Dan");
  members.EndList();
  EXPECT_THAT(Heard(), ElementsAre("~Cy", "+Dan", "-Bob"));
}

TEST_F(MembersTest, AreBoundedInNumberAndInNames) {
  Relay(std::string(Members::kMaxNameBytes + 1, 'x'));
  EXPECT_TRUE(members.IsIncomplete());
  members.Clear();
  for (int i = 0; i < 20'000; ++i)
    Relay("user " + std::to_string(i));
  EXPECT_EQ(members.Count(), Members::kMaxMembers);
  members.BeginList();
  EXPECT_TRUE(members.IsIncomplete());
  members.EndList();
  EXPECT_FALSE(members.IsIncomplete());
  EXPECT_EQ(members.Count(), 0U);
}

}  // namespace
}  // namespace corvane::client
