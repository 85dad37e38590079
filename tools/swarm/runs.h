#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/swarm/client.h"
#include "tools/swarm/options.h"
#include "tools/swarm/run_result.h"

namespace corvane::swarm {

// The demonstration: players live in their networks until the run is interrupted or its time is
// up. They obey the server (kick, ban, "BYE") and come back later, and they wait for a server that
// is gone for a while; only a log-in that fails before anybody was ever in ends the run. Returns
// the program's exit code.
int RunDemo(const Options& options);

// Accounts for every delivery: all members log in, the traffic runs, what is still on the road
// arrives, all leave. A member that cannot log in ends the run before it begins.
RunResult RunMeasured(const Options& options);

// Every client logs in, leaves at once and comes back, until the time is over and all have left. A
// client that fails in any way ends the run.
RunResult RunChurn(const Options& options);

// All clients connect at the same moment and wait to be greeted, round after round. When all are,
// or the time of the options is over, all end at once and the next round begins.
RushResult RunRush(const Options& options);

// The clients that the options ask for, offline: the members of network 0, then those of network 1,
// and so on. Each is named by its place among all.
std::vector<std::unique_ptr<Client>> MakeMembers(
    const Options& options, const std::function<std::string(Member, std::size_t place)>& nameOf);
// With the names of a measured run.
std::vector<std::unique_ptr<Client>> MakeMembers(const Options& options);

}  // namespace corvane::swarm
