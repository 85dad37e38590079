#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/swarm/client_pool.h"
#include "tools/swarm/delivery_book.h"

namespace corvane::swarm {

struct RunResult;

// The members of a measured run, for a load. Borrows the pool, the book and the clients.
struct Senders {
  // Sends the next reports of the member at that place, and books them.
  void Send(std::size_t place, std::size_t reports) {
    Client& client = *clients[place];
    const Member sender = client.Identity();
    for (std::size_t i = 0; i < reports; ++i)
      pool.Send(client, ReportOf(sender, book.Send(sender)));
  }

  ClientPool& pool;
  DeliveryBook& book;
  std::vector<Client*> clients;  // the members of network 0, then those of network 1, and so on
  std::size_t users;             // in each network
};

// Decides what a measured run sends, and when. The run calls it while all members are online, and
// counts the deliveries.
class Load {
 public:
  virtual ~Load() = default;

  // Starts sending, until `until`.
  virtual void Start(Clock::time_point now, Clock::time_point until) = 0;
  // Called at the time given to ClientPool::WakeAt.
  virtual void Wake(Clock::time_point now) = 0;
  // Called for each expected delivery. Returns the time from which its latency counts: when its
  // report was sent or, with a timetable, when it was due.
  virtual Clock::time_point Delivered(Member sender, std::uint32_t sequence,
                                      Clock::time_point now) = 0;
  // Stops sending.
  virtual void Stop() = 0;
  // Whether it has stopped sending.
  virtual bool IsDone() const = 0;
  // Whether a message with this payload, which is not a delivery, counts as unexpected.
  virtual bool IsDisturbing(std::string_view) const { return true; }
  // Called at the end: adds its own results.
  virtual void AddTo(RunResult&) {}
};

}  // namespace corvane::swarm
