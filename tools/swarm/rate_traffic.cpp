#include "tools/swarm/rate_traffic.h"

#include <cmath>
#include <utility>

namespace corvane::swarm {

RateTraffic::RateTraffic(ClientPool& pool, DeliveryBook& book, std::vector<Client*> clients,
                         std::size_t users, double reportsPerSecond, std::size_t burst)
    : myPool(pool),
      myBook(book),
      myClients(std::move(clients)),
      myUsers(users),
      myBurst(burst),
      myNanosecondsBetween(1e9 * static_cast<double>(burst) /
                           (reportsPerSecond * static_cast<double>(myClients.size()))) {}

void RateTraffic::Start(Clock::time_point now, Clock::time_point until) {
  myStart = now;
  const double duration = std::chrono::duration<double, std::nano>(until - now).count();
  myTotal = static_cast<std::uint64_t>(std::llround(duration / myNanosecondsBetween));
  Wake(now);
}

void RateTraffic::Wake(Clock::time_point now) {
  for (; myNext < myTotal && DueTime(myNext) <= now; ++myNext) {
    Client& client = *myClients[myNext % myClients.size()];
    const Member sender = client.Identity();
    for (std::size_t i = 0; i < myBurst; ++i)
      myPool.Send(client, ReportOf(sender, myBook.Send(sender)));
  }
  if (myNext < myTotal) myPool.WakeAt(DueTime(myNext));
}

Clock::time_point RateTraffic::Delivered(Member sender, std::uint32_t sequence, Clock::time_point) {
  return DueTime((sequence - 1) / myBurst * myClients.size() + sender.network * myUsers +
                 sender.user);
}

Clock::time_point RateTraffic::DueTime(std::uint64_t burst) const {
  const double offset = static_cast<double>(burst) * myNanosecondsBetween;
  return myStart + std::chrono::nanoseconds(std::llround(offset));
}

}  // namespace corvane::swarm
