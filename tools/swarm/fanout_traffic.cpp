#include "tools/swarm/fanout_traffic.h"

#include <utility>

namespace corvane::swarm {

FanoutTraffic::FanoutTraffic(ClientPool& pool, DeliveryBook& book, std::vector<Client*> clients,
                             std::size_t users, std::size_t reporters, std::size_t burst)
    : myPool(pool),
      myBook(book),
      myClients(std::move(clients)),
      myUsers(users),
      myReporters(reporters),
      myBurst(burst),
      myLoops(myClients.size() / users) {}

void FanoutTraffic::Start(Clock::time_point now, Clock::time_point until) {
  myUntil = until;
  for (std::size_t network = 0; network < myLoops.size(); ++network)
    StartBurst(network, now);
  myPool.WakeAt(until);
}

// Deliveries drive the loop; the time only ends it, also where one never comes.
void FanoutTraffic::Wake(Clock::time_point now) {
  if (now >= myUntil) Stop();
}

Clock::time_point FanoutTraffic::Delivered(Member sender, std::uint32_t, Clock::time_point now) {
  Loop& loop = myLoops[sender.network];
  const Clock::time_point sent = loop.burstStart;
  if (--loop.outstanding == 0) {
    --myBursting;
    if (!myIsStopped && now < myUntil) StartBurst(sender.network, now);
  }
  return sent;
}

void FanoutTraffic::StartBurst(std::size_t network, Clock::time_point now) {
  Loop& loop = myLoops[network];
  loop.burstStart = now;
  loop.outstanding = myReporters * myBurst * (myUsers - 1);
  ++myBursting;
  for (std::size_t user = 0; user < myReporters; ++user) {
    const Member sender{network, user};
    Client& client = *myClients[network * myUsers + user];
    for (std::size_t i = 0; i < myBurst; ++i) {
      myPool.Send(client, ReportOf(sender, myBook.Send(sender)));
    }
  }
}

}  // namespace corvane::swarm
