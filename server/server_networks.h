#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "framework/text.h"

namespace corvane {

// One network: a named, password-protected group of clients that see each other's positions. It
// enforces nothing itself; sessions apply MaxUsers and Enabled and keep CurrentUsers through their
// seats. Networks are compared by identity, and one that was removed from the listener stays valid
// while sessions point to it.
class ServerNetworks {
 public:
  ServerNetworks(std::string networkName, std::string password, std::int32_t maxUsers, bool enabled)
      : NetworkName(std::move(networkName)),
        FoldedName(FoldText(NetworkName)),
        MaxUsers(maxUsers),
        Enabled(enabled),
        Password(std::move(password)) {}

  const std::string NetworkName;
  // The same folded, for comparing.
  const std::string FoldedName;
  std::int32_t MaxUsers;
  bool Enabled;
  std::string Password;
  std::int32_t CurrentUsers = 0;
};

using NetworkRef = std::shared_ptr<ServerNetworks>;

}  // namespace corvane
