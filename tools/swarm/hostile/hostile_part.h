#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "tools/swarm/client.h"

namespace corvane::swarm {

// With this the user names of strangers that log in begin.
inline constexpr std::string_view kStrangerPrefix = "hostile";

// How far the strangers of a part get before they act.
enum class Standing {
  Outside,       // greeted; they have no password
  AtPassword,    // have named the other network; they have no password
  OtherNetwork,  // members of a network of their own
  SameNetwork    // members of the honest members' network
};

// What strangers do to a server to hurt its other clients: one class a part. Told from the thread
// of the strangers' pool only.
class HostilePart {
 public:
  struct Habits {
    Standing standing = Standing::Outside;
    std::size_t strangers = 1;
    // So many wait for the server's greeting at a time. Few, so that it is the part that is
    // measured and not a queue of new connections that is too short.
    std::size_t connectAtOnce = 2;
    // Who is not greeted for so long gives up, and has been ended by the server.
    Clock::duration patience = std::chrono::seconds(2);
    bool isReading = true;  // what the server sends, once they act
  };

  explicit HostilePart(const Habits& habits) : myHabits(habits) {}
  virtual ~HostilePart() = default;

  const Habits& Custom() const { return myHabits; }

  virtual std::string UserName(std::size_t index) const {
    return std::string(kStrangerPrefix) + std::to_string(index);
  }
  // The stranger has got as far as it is to get, or all that it was to send is on its way: it sends
  // something, rests or hangs up.
  virtual void Act(Client& stranger) = 0;
  // The server ended the connection or never took it. It comes back, after a rest if it is given
  // one here.
  virtual void Ended(Client& stranger) {
    stranger.RestUntil(Clock::now() + std::chrono::milliseconds(50));
  }

 private:
  Habits myHabits;
};

}  // namespace corvane::swarm
