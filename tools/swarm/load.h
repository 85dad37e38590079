#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/swarm/client_pool.h"
#include "tools/swarm/delivery_book.h"

namespace corvane::swarm {

struct RunResult;

// The members of a measured run, as a load sends reports from them.
struct Senders {
  // The member at that place sends its next reports, which are booked.
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

// What a measured run sends, and when. The run calls it while all members are online, and counts.
class Load {
 public:
  virtual ~Load() = default;

  // Begins to send; `until` is when to send the last.
  virtual void Start(Clock::time_point now, Clock::time_point until) = 0;
  // The time that it gave to ClientPool::WakeAt has come.
  virtual void Wake(Clock::time_point now) = 0;
  // A delivery that was expected has come. Returns when its report was sent or, where reports have
  // a timetable, when it was due.
  virtual Clock::time_point Delivered(Member sender, std::uint32_t sequence,
                                      Clock::time_point now) = 0;
  // Sends nothing more.
  virtual void Stop() = 0;
  // Whether it will send nothing more.
  virtual bool IsDone() const = 0;
  // Whether a message of this payload, which is no delivery, should not have come.
  virtual bool IsDisturbing(std::string_view) const { return true; }
  // At the end: adds what it alone knows.
  virtual void AddTo(RunResult&) {}
};

}  // namespace corvane::swarm
