#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/swarm/client.h"
#include "tools/swarm/options.h"
#include "tools/swarm/run_result.h"

namespace corvane::swarm {

// The demonstration: players play in their networks until the run is interrupted or its time is up.
// They leave when the server says so (kick, ban, "BYE") and return later, also after the connection
// was lost. A login that fails before any has succeeded ends the run. Returns the program's exit
// code.
int RunDemo(const Options& options);

// A run that accounts for every delivery: all members log in, the load runs, the last deliveries
// arrive, all leave. A member that cannot log in ends the run before the load.
RunResult RunMeasured(const Options& options);

// Every client logs in, leaves at once and comes back, until the time is over and all have left.
// Any failure ends the run.
RunResult RunChurn(const Options& options);

// All clients connect at the same moment and wait for the greeting. Once all are greeted, or the
// time is over, all disconnect at once and the next round begins.
RushResult RunRush(const Options& options);

// The clients that the options ask for, offline: the members of network 0, then those of network 1,
// and so on. Each is named by its place among all.
std::vector<std::unique_ptr<Client>> MakeMembers(
    const Options& options, const std::function<std::string(Member, std::size_t place)>& nameOf);
// With the names of a measured run.
std::vector<std::unique_ptr<Client>> MakeMembers(const Options& options);

}  // namespace corvane::swarm
