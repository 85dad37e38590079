#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/swarm/client_pool.h"
#include "tools/swarm/options.h"
#include "tools/swarm/run_result.h"
#include "tools/swarm/server_probe.h"

namespace corvane::swarm {

// A run of coming and going: every client logs in, leaves at once and comes back, until the time is
// over and all have left. A client that fails in any way ends the run.
class ChurnRun : public ClientEvents {
 public:
  explicit ChurnRun(const Options& options);

  RunResult Execute();

  void LoggedIn(Client& client) override;
  // Others that leave are news to those who are still there.
  void Received(Client&, std::int32_t, std::string_view) override {}
  void Left(Client& client) override;
  void Lost(Client& client, Client::State before, const std::string& reason) override;
  void Wake(Clock::time_point) override { End(); }
  void Interrupted() override;

 private:
  void Connect(Client& client);
  void End() { myIsEnding = true; }
  void IsOut();

  const Options& myOptions;
  ClientPool myPool;
  std::vector<std::unique_ptr<Client>> myClients;
  std::optional<ServerProbe> myServer;
  RunResult myResult;
  std::uint64_t myVisits = 0;
  std::size_t myUnderway = 0;
  bool myIsEnding = false;
};

}  // namespace corvane::swarm
