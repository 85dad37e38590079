#include "server/server_networks.h"

#include <utility>

namespace corvane {

ServerNetworks::ServerNetworks(std::string networkName, std::string password, std::int32_t maxUsers,
                               bool enabled)
    : NetworkName(std::move(networkName)),
      MaxUsers(maxUsers),
      Enabled(enabled),
      Password(std::move(password)) {}

}  // namespace corvane
