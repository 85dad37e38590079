#include "tools/swarm/members.h"

#include <string>
#include <utility>

#include "client/password_digest.h"

namespace corvane::swarm {

std::vector<std::unique_ptr<Client>> MakeMembers(const Options& options) {
  const std::string digest = client::PasswordDigest(options.password);
  std::vector<std::unique_ptr<Client>> members;
  for (std::size_t network = 0; network < options.networks.size(); ++network) {
    for (std::size_t user = 0; user < options.users; ++user) {
      const Member member{network, user};
      client::Login login(
          {options.networks[network], digest, UserNameOf(options.userPrefix, member)});
      members.push_back(std::make_unique<Client>(member, std::move(login)));
    }
  }
  return members;
}

}  // namespace corvane::swarm
