#pragma once

#include <memory>
#include <vector>

#include "tools/swarm/client.h"
#include "tools/swarm/options.h"

namespace corvane::swarm {

// The clients that the options ask for, offline: the members of network 0, then those of network 1,
// and so on.
std::vector<std::unique_ptr<Client>> MakeMembers(const Options& options);

}  // namespace corvane::swarm
