#pragma once

#include <deque>
#include <exception>
#include <thread>

#include "tools/swarm/client_pool.h"
#include "tools/swarm/hostile/attack.h"
#include "tools/swarm/run_result.h"

namespace corvane::swarm {

// Runs the strangers of one attack on their own thread, which has a lower priority than the
// measuring one. Their input is discarded.
class Attackers : public ClientEvents {
 public:
  Attackers(const Options& options, Attack attack);
  ~Attackers() override;
  Attackers(const Attackers&) = delete;
  Attackers& operator=(const Attackers&) = delete;

  void Start();
  // Asks the strangers to end, without waiting.
  void Stop() const { myPool.Interrupt(); }
  // Stops them and waits. Rethrows the error that ended them, if any.
  StrangerCounts Finish();

  void Greeted(Client&) override { ++myCounts.greeted; }
  void LoggedIn(Client& stranger) override;
  void Idle(Client& stranger) override { myAttack.act(stranger); }
  void Lost(Client& stranger, Client::State before, const std::string& reason) override;
  void Interrupted() override { myPool.Stop(); }

 private:
  void Run();

  Attack myAttack;
  std::string myFirstStep;  // of strangers that stay at the password
  ClientPool myPool;
  std::deque<Client> myStrangers;
  StrangerCounts myCounts;
  std::exception_ptr myError;
  std::thread myThread;
};

}  // namespace corvane::swarm
