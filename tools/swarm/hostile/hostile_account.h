#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <string>

#include "tools/swarm/hostile/stranger_pool.h"
#include "tools/swarm/latency_histogram.h"

namespace corvane::swarm {

// How the honest members fared before, while and after the hostile side played its part.
struct HostileAccount {
  struct Window {
    LatencyHistogram latency;
    // How late the reports left this program: what the machine and the program itself, which share
    // the processors with the server, have in the latency.
    LatencyHistogram lateness;
    // How long the server waited for a processor, which is in the latency too.
    std::optional<std::chrono::nanoseconds> serverWait;
  };

  static constexpr std::array kWindowNames = {"before", "during", "after"};

  std::string part;
  std::array<Window, kWindowNames.size()> windows;
  StrangerCounts strangers;
};

}  // namespace corvane::swarm
