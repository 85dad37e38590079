#include "tools/swarm/delivery_book.h"

#include <gtest/gtest.h>

namespace corvane::swarm {
namespace {

constexpr Member kSender{1, 0};
constexpr Member kOther{1, 2};

TEST(DeliveryBook, CountsMissingAndUnexpectedDeliveries) {
  // Two networks of three members, two of which report.
  DeliveryBook book{2, 3, 2};
  for (std::uint32_t sequence = 1; sequence <= 3; ++sequence)
    EXPECT_EQ(book.Send(kSender), sequence);
  client::Report altered = ReportOf(kSender, 2);
  ++altered.y;
  ASSERT_TRUE(book.Receive(kOther, kSender, ReportOf(kSender, 1)));

  EXPECT_FALSE(book.Receive(kOther, kSender, ReportOf(kSender, 1))) << "twice";
  EXPECT_FALSE(book.Receive(kOther, kSender, ReportOf(kSender, 4))) << "never sent";
  EXPECT_FALSE(book.Receive(kOther, kSender, altered)) << "altered";
  EXPECT_FALSE(book.Receive(kSender, kSender, ReportOf(kSender, 1))) << "its own";
  EXPECT_FALSE(book.Receive({0, 2}, kSender, ReportOf(kSender, 1))) << "another network's";
  EXPECT_FALSE(book.Receive({1, 1}, kOther, ReportOf(kOther, 1)))
      << "of a member that sends nothing";
  EXPECT_FALSE(book.Receive(kOther, {7, 0}, ReportOf({7, 0}, 1))) << "of no member";
  EXPECT_EQ(book.Unexpected(), 7U);
  EXPECT_EQ(book.Received(), 1U);

  EXPECT_TRUE(book.Receive(kOther, kSender, ReportOf(kSender, 3)));
  EXPECT_FALSE(book.Receive(kOther, kSender, ReportOf(kSender, 2))) << "overtaken";
  EXPECT_EQ(book.Missing(), 4U);
}

}  // namespace
}  // namespace corvane::swarm
