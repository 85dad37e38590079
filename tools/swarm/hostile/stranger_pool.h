#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <netinet/in.h>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/swarm/hostile/hostile_part.h"
#include "tools/swarm/loopback.h"

namespace corvane::swarm {

// What became of the strangers of a run.
struct StrangerCounts {
  std::uint64_t greeted = 0;
  std::uint64_t acted = 0;  // of the connections: those that got as far as to act
  std::uint64_t ended = 0;  // connections that the server ended or did not take
  std::uint64_t bytesSent = 0;
  std::string refusal;  // the last log-in that was refused; for a person to read
};

// The connections of the strangers of one part, on one thread and one epoll descriptor. Cheap for
// its size, since it shares the machine with those who measure: what is sent again and again is
// held once, what comes is thrown away unread. Where no addresses are given and the ports to a
// server on this machine run out, further connections come from further addresses of it. Borrows
// the part, which outlives it. Throws std::system_error when the system refuses what it needs
// itself.
class StrangerPool {
 public:
  struct Access {
    std::string network;
    std::string passwordDigest;
    LoopbackRange sources;  // each comes from the one of its index
  };

  // `access` is what a part's strangers log in with; those who stay outside need none.
  StrangerPool(const sockaddr_in& server, HostilePart& part, const Access& access);
  ~StrangerPool();
  StrangerPool(const StrangerPool&) = delete;
  StrangerPool& operator=(const StrangerPool&) = delete;

  // Plays the part until told to stop or until that time; then all connections are reset.
  void Run(const std::stop_token& stop, Clock::time_point until = Clock::time_point::max());

  const StrangerCounts& Counts() const { return myCounts; }

 private:
  void StartConnecting();
  void StartConnecting(Stranger& stranger);
  bool Connect(const Stranger& stranger);
  bool TakeNextSource();
  void Handle(Stranger& stranger, std::uint32_t ready);
  void FinishConnecting(Stranger& stranger);
  void Read(Stranger& stranger);
  void Receive(Stranger& stranger, std::int32_t command, std::string_view payload);
  void Write(Stranger& stranger);
  void Watch(Stranger& stranger);
  std::uint32_t InterestOf(const Stranger& stranger) const;
  void Rest(Stranger& stranger);
  void EndRest(Stranger& stranger);
  void WakeRested(Clock::time_point now);
  int Timeout(Clock::time_point now) const;
  void End(Stranger& stranger);
  void Close(Stranger& stranger);

  sockaddr_in myServer;
  LoopbackRange mySources;
  in_addr_t mySource = 0;  // of new connections, where ports ran out
  HostilePart& myPart;
  int myEpoll;
  std::vector<std::unique_ptr<Stranger>> myStrangers;
  std::deque<Stranger*> myQueue;  // to be connected
  std::size_t myUngreeted = 0;
  std::set<std::pair<Clock::time_point, Stranger*>> myResting;
  std::vector<char> myBuffer;
  StrangerCounts myCounts;
};

}  // namespace corvane::swarm
