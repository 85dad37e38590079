#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/swarm/client_pool.h"
#include "tools/swarm/delivery_book.h"
#include "tools/swarm/options.h"
#include "tools/swarm/run_result.h"
#include "tools/swarm/server_probe.h"
#include "tools/swarm/traffic.h"

namespace corvane::swarm {

// A run that accounts for every delivery: all members log in, the traffic runs, what is still on
// the road arrives, all leave. A member that cannot log in ends the run before it begins.
class MeasuredRun : public ClientEvents {
 public:
  explicit MeasuredRun(const Options& options);

  RunResult Execute();

  void LoggedIn(Client& client) override;
  void Received(Client& client, std::int32_t command, std::string_view payload) override;
  void Left(Client& client) override;
  void Lost(Client& client, Client::State before, const std::string& reason) override;
  void Wake(Clock::time_point now) override;
  void Interrupted() override;

 private:
  enum class Phase {
    Arriving,
    Settling,  // all are in and nothing happens, so that the server's memory comes to rest
    Sending,   // or, where the traffic is none, waiting
    Draining,  // nothing more is sent; deliveries are still on the road
    Leaving
  };

  std::unique_ptr<Traffic> MakeTraffic(const Options& options);
  void StartSending();
  void DrainIfSent();
  void EndSending();
  void StartLeaving();
  void StopIfAllLeft() {
    if (myOnline == 0) myPool.Stop();
  }
  std::optional<std::int64_t> ServerRssKib() const;

  const Options& myOptions;
  ClientPool myPool;
  DeliveryBook myBook;
  std::vector<std::unique_ptr<Client>> myClients;
  std::unique_ptr<Traffic> myTraffic;
  std::optional<ServerProbe> myServer;
  RunResult myResult;
  Phase myPhase = Phase::Arriving;
  std::size_t myOnline = 0;
  Clock::time_point mySendingStart;
  Clock::time_point myLastDelivery;
};

}  // namespace corvane::swarm
