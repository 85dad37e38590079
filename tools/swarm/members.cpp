#include <utility>

#include "client/password_digest.h"
#include "tools/swarm/runs.h"

namespace corvane::swarm {

std::vector<std::unique_ptr<Client>> MakeMembers(
    const Options& options, const std::function<std::string(Member, std::size_t place)>& nameOf) {
  const std::string digest = client::PasswordDigest(options.password);
  std::vector<std::unique_ptr<Client>> members;
  for (std::size_t network = 0; network < options.networks.size(); ++network) {
    for (std::size_t user = 0; user < options.users; ++user) {
      const Member member{network, user};
      client::Login login({options.networks[network], digest, nameOf(member, members.size())});
      members.push_back(std::make_unique<Client>(member, std::move(login)));
    }
  }
  return members;
}

std::vector<std::unique_ptr<Client>> MakeMembers(const Options& options) {
  return MakeMembers(options, [&options](Member member, std::size_t) {
    return UserNameOf(options.userPrefix, member);
  });
}

}  // namespace corvane::swarm
