#pragma once

#include <deque>
#include <exception>
#include <memory>
#include <thread>

#include "tools/swarm/client_pool.h"
#include "tools/swarm/hostile/parts.h"
#include "tools/swarm/run_result.h"

namespace corvane::swarm {

// The strangers of one part on a thread of their own, which gives way to the thread that measures.
// What they send again and again is held once, what comes is thrown away unread.
class HostileSide : public ClientEvents {
 public:
  HostileSide(const Options& options, std::unique_ptr<HostilePart> part);
  ~HostileSide() override;
  HostileSide(const HostileSide&) = delete;
  HostileSide& operator=(const HostileSide&) = delete;

  void Start();
  // Asks the strangers to end and does not wait for it.
  void Stop() const { myPool.Interrupt(); }
  // Waits for their end. Throws what ended them, if that was an error.
  StrangerCounts Finish();

  void Greeted(Client&) override { ++myCounts.greeted; }
  void LoggedIn(Client& stranger) override;
  void Idle(Client& stranger) override { myPart->Act(stranger); }
  void Lost(Client& stranger, Client::State before, const std::string& reason) override;
  void Interrupted() override { myPool.Stop(); }

 private:
  void Run();

  std::unique_ptr<HostilePart> myPart;
  std::string myFirstStep;  // of those who stay at the password
  ClientPool myPool;
  std::deque<Client> myStrangers;
  StrangerCounts myCounts;
  std::exception_ptr myError;
  std::thread myThread;
};

}  // namespace corvane::swarm
