#include "tools/swarm/delivery_book.h"

#include <gtest/gtest.h>

namespace corvane::swarm {
namespace {

constexpr Member kSender{1, 0};
constexpr Member kOther{1, 2};

class DeliveryBookTest : public testing::Test {
 protected:
  // Two networks of three members, two of which report.
  DeliveryBook myBook{2, 3, 2};
};

TEST_F(DeliveryBookTest, ExpectsEachReportOnceAtEveryOtherMember) {
  for (std::uint32_t sequence = 1; sequence <= 2; ++sequence) {
    EXPECT_EQ(myBook.Send(kSender), sequence);
  }
  EXPECT_EQ(myBook.Expected(), 4U);
  for (std::uint32_t sequence = 1; sequence <= 2; ++sequence) {
    for (const std::size_t user : {std::size_t{1}, std::size_t{2}}) {
      EXPECT_TRUE(myBook.Receive({1, user}, kSender, ReportOf(kSender, sequence)));
    }
  }
  EXPECT_EQ(myBook.Missing(), 0U);
  EXPECT_EQ(myBook.Unexpected(), 0U);
}

TEST_F(DeliveryBookTest, CountsUnexpectedDeliveries) {
  for (int i = 0; i < 3; ++i)
    myBook.Send(kSender);
  client::Report altered = ReportOf(kSender, 2);
  ++altered.y;
  ASSERT_TRUE(myBook.Receive(kOther, kSender, ReportOf(kSender, 1)));

  EXPECT_FALSE(myBook.Receive(kOther, kSender, ReportOf(kSender, 1))) << "twice";
  EXPECT_FALSE(myBook.Receive(kOther, kSender, ReportOf(kSender, 4))) << "never sent";
  EXPECT_FALSE(myBook.Receive(kOther, kSender, altered)) << "altered";
  EXPECT_FALSE(myBook.Receive(kSender, kSender, ReportOf(kSender, 1))) << "its own";
  EXPECT_FALSE(myBook.Receive({0, 2}, kSender, ReportOf(kSender, 1))) << "another network's";
  EXPECT_FALSE(myBook.Receive({1, 1}, kOther, ReportOf(kOther, 1)))
      << "of a member that sends nothing";
  EXPECT_FALSE(myBook.Receive(kOther, {7, 0}, ReportOf({7, 0}, 1))) << "of no member";
  EXPECT_EQ(myBook.Unexpected(), 7U);
  EXPECT_EQ(myBook.Received(), 1U);

  EXPECT_TRUE(myBook.Receive(kOther, kSender, ReportOf(kSender, 3)));
  EXPECT_FALSE(myBook.Receive(kOther, kSender, ReportOf(kSender, 2))) << "overtaken";
  EXPECT_EQ(myBook.Missing(), 4U);
}

}  // namespace
}  // namespace corvane::swarm
