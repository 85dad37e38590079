#include "control/lookup.h"

#include "app/operator.h"
#include "control/answers.h"
#include "control/request.h"
#include "server/map_socket.h"

namespace corvane {

QJsonObject NetworkRow(const ServerNetworks& network) {
  return {{"name", AnswerText(network.NetworkName)},
          {"users", network.CurrentUsers},
          {"max-users", network.MaxUsers},
          {"enabled", network.Enabled}};
}

NetworkRef NetworkNamed(const Operator& op, const std::string& name) {
  NetworkRef network = op.Listener().FindNetwork(name);
  if (network == nullptr) throw Refused("there is no network \"" + name + '"');
  return network;
}

void RefuseForDatabase(const Operator& op) {
  throw Refused("database: " + op.StoreError());
}

}  // namespace corvane
