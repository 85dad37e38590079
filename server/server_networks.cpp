#include "server/server_networks.h"

#include <utility>

#include "framework/text.h"

namespace corvane {

ServerNetworks::ServerNetworks(std::string networkName, std::string password, std::int32_t maxUsers,
                               bool enabled)
    : NetworkName(std::move(networkName)),
      FoldedName(FoldText(NetworkName)),
      MaxUsers(maxUsers),
      Enabled(enabled),
      Password(std::move(password)) {}

}  // namespace corvane
