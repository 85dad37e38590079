#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "framework/text.h"

namespace corvane {

// One network: a named, password-protected group of clients that see each other's positions.
// Enforces nothing itself: seats apply MaxUsers and Enabled and keep CurrentUsers. Networks are
// compared by identity. A removed network stays valid while sessions refer to it.
class ServerNetworks {
 public:
  ServerNetworks(std::string networkName, std::string password, std::int32_t maxUsers, bool enabled)
      : NetworkName(std::move(networkName)),
        FoldedName(FoldText(NetworkName)),
        MaxUsers(maxUsers),
        Enabled(enabled),
        Password(std::move(password)) {}

  const std::string NetworkName;
  // The name folded, for comparing.
  const std::string FoldedName;
  std::int32_t MaxUsers;
  bool Enabled;
  std::string Password;
  std::int32_t CurrentUsers = 0;
};

using NetworkRef = std::shared_ptr<ServerNetworks>;

}  // namespace corvane
