#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/swarm/hostile/hostile_part.h"
#include "tools/swarm/options.h"

namespace corvane::swarm {

// What became of the clients of each rush.
struct RushResult {
  struct Round {
    std::size_t greeted = 0;
    std::size_t refused = 0;  // not taken, or ended before the greeting
    std::size_t cutOff = 0;   // ended after it
    // From the first connect to the last greeting.
    std::chrono::duration<double> untilLastGreeted{0};
  };

  std::size_t clients = 0;
  std::vector<Round> rounds;

  std::size_t Hung(const Round& round) const { return clients - round.greeted - round.refused; }
  // All were greeted and stayed, in every round.
  bool IsGood() const;
  // One line for a person.
  std::string ToText() const;
  // One line for a program; the keys stay as they are.
  std::string ToJson() const;
};

// All clients connect at the same moment and wait to be greeted, round after round. When all are,
// or the patience of the options is over, all end at once and the next round begins.
class RushRun {
 public:
  explicit RushRun(const Options& options) : myOptions(options) {}

  RushResult Execute() const;

 private:
  RushResult::Round PlayRound() const;

  const Options& myOptions;
};

}  // namespace corvane::swarm
