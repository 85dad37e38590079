#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <span>
#include <string_view>

#include "tools/swarm/client.h"

namespace corvane::swarm {

// The user names of strangers begin with this.
inline constexpr std::string_view kStrangerPrefix = "hostile";

// How far the strangers get before they act.
enum class Standing {
  Outside,       // greeted; they have no password
  AtPassword,    // have named the strangers' network; they have no password
  OtherNetwork,  // members of the strangers' network
  SameNetwork    // members of the honest members' network
};

// An attack: how many strangers connect and what they do to disturb the server's other clients.
// Used on one thread only.
struct Attack {
  // Called when a stranger has reached its standing, and again whenever its output is sent. It
  // sends something, rests or hangs up.
  std::function<void(Client& stranger)> act;
  Standing standing = Standing::Outside;
  std::size_t strangers = 1;
  // How many strangers connect or wait for the greeting at a time. Few, so that the measurement
  // shows the attack and not a short accept backlog.
  std::size_t connectAtOnce = 2;
  // A stranger that is not greeted for this long gives up and connects again.
  Clock::duration patience = std::chrono::seconds(2);
  bool isReading = true;      // once they act
  std::size_t nameBytes = 0;  // shorter user names are padded to this
  // How long a stranger waits before it connects again after the server ended or refused its
  // connection.
  Clock::duration absence = std::chrono::milliseconds(50);
};

struct NamedAttack {
  const char* name;
  const char* description;
  Attack (*make)();
};

std::span<const NamedAttack> Attacks();
// nullptr if there is no attack of that name.
const NamedAttack* FindAttack(std::string_view name);

}  // namespace corvane::swarm
