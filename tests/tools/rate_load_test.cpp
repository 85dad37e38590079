#include "tools/swarm/rate_load.h"

#include <memory>

#include <gtest/gtest.h>

namespace corvane::swarm {
namespace {

using std::chrono::milliseconds;

TEST(RateLoad, ReportsAreDueWithTheirBurst) {
  constexpr std::size_t kUsers = 2;
  constexpr std::size_t kBurst = 3;
  ClientPool pool({});
  DeliveryBook book(2, kUsers, kUsers);
  std::vector<std::unique_ptr<Client>> members;
  std::vector<Client*> clients;
  for (std::size_t i = 0; i < 2 * kUsers; ++i) {
    members.push_back(
        std::make_unique<Client>(Member{i / kUsers, i % kUsers}, client::Login({"", "", ""})));
    clients.push_back(members.back().get());
  }
  // Four members with three reports a burst: one burst every 100 ms.
  RateLoad load({pool, book, clients, kUsers}, 7.5, kBurst);
  const Clock::time_point start{milliseconds(5000)};
  load.Start(start, start + milliseconds(1000));
  EXPECT_EQ(book.Sent(), kBurst);
  EXPECT_EQ(load.NextDue(), start + milliseconds(100));

  load.Wake(start + milliseconds(650));
  EXPECT_EQ(book.Sent(), 7 * kBurst);
  struct {
    Member sender;
    std::uint32_t sequence;
    milliseconds due;
  } const cases[] = {{{0, 0}, 1, milliseconds(0)},
                     {{0, 0}, 3, milliseconds(0)},
                     {{1, 1}, 3, milliseconds(300)},
                     {{0, 0}, 4, milliseconds(400)},
                     {{1, 0}, 6, milliseconds(600)}};
  for (const auto& [sender, sequence, due] : cases) {
    EXPECT_EQ(load.Delivered(sender, sequence, start) - start, due) << sequence;
  }
  load.Wake(start + milliseconds(2000));
  EXPECT_TRUE(load.IsDone());
  EXPECT_EQ(book.Sent(), 10 * kBurst);
}

}  // namespace
}  // namespace corvane::swarm
