#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <QPointer>
#include <QStringList>

#include "control/control_connection.h"
#include "server/server_events.h"

namespace corvane {

// Sends the server's events to clients of the local socket that follow them, one JSON object a
// line. The server never waits: a client that reads too slowly, or more than 1000 events in a
// second, loses events, and the next one that it gets has their number as "dropped". Borrows the
// events.
class EventFeed {
 public:
  explicit EventFeed(ServerEvents& events);

  // Sends events of these types, separated by commas, in place of those before; without a list, of
  // all. Throws Misused for a type that does not exist.
  void Follow(ControlConnection& client, const std::optional<std::string>& types);

 private:
  struct Follower {
    QPointer<ControlConnection> client;
    QStringList types;
    qint64 dropped = 0;
    int sent = 0;  // in this second
    std::chrono::steady_clock::time_point second{};
  };
  void Send(const ServerEvent& event);

  std::vector<Follower> myFollowers;
  const SignalConnection myEvents;
};

}  // namespace corvane
