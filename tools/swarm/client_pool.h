#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/epoll.h>
#include <vector>

#include "tools/swarm/client.h"
#include "tools/swarm/loopback.h"

namespace corvane::swarm {

// What the pool tells a mode of the program. A client that ended may be connected again from
// within the call.
class ClientEvents {
 public:
  virtual ~ClientEvents() = default;
  virtual void LoggedIn(Client& client) = 0;
  // A message for a client that is online.
  virtual void Received(Client& client, std::int32_t command, std::string_view payload) = 0;
  // The client left and the server said "BYE".
  virtual void Left(Client& client) = 0;
  // The connection failed or ended in any other way, at log-in or after it; the reason is for a
  // person to read.
  virtual void Lost(Client& client, Client::State before, const std::string& reason) = 0;
  // The time asked for with WakeAt has come.
  virtual void Wake(Clock::time_point now) = 0;
  // The user asks the program to end (SIGINT or SIGTERM).
  virtual void Interrupted() = 0;
};

// The connections of all simulated players on one thread and one epoll descriptor. Reads go
// through one large buffer, writes are gathered and go out once per client and round. Borrows the
// clients, which outlive it. Throws std::system_error when the system refuses what it needs itself.
class ClientPool {
 public:
  // The clients come from the addresses of `sources` in turn.
  ClientPool(const sockaddr_in& server, const LoopbackRange& sources, std::size_t connectAtOnce);
  ~ClientPool();
  ClientPool(const ClientPool&) = delete;
  ClientPool& operator=(const ClientPool&) = delete;

  // Runs until Stop, raising events.
  void Run(ClientEvents& events);
  void Stop() { myIsStopped = true; }

  // Connects and logs in a client that is offline, when its turn comes: few at a time wait for the
  // server's greeting, since its queue of new connections may be short. A system whose queue
  // overflows may drop a connection that its client takes for made.
  void Connect(Client& client);
  // Sends a report of a client that is online; does nothing for any other.
  void Send(Client& client, const client::Report& report);
  // Asks the server's leave; a client that is still on its way in is just closed.
  void Leave(Client& client);
  // Ends the connection without a word, so that the server sees it reset.
  void Reset(Client& client);

  // Raises Wake once at that time, instead of at the time asked for before.
  void WakeAt(Clock::time_point time);

 private:
  void StartConnecting();
  void StartConnecting(Client& client);
  void Handle(Client& client, std::uint32_t ready);
  void FinishConnecting(Client& client);
  void Read(Client& client);
  void Greet(Client& client);
  void Receive(Client& client, std::int32_t command, std::string_view payload);
  void LoseImpatient(Clock::time_point now);
  void MarkDirty(Client& client);
  void WriteDirty();
  void Write(Client& client);
  void Watch(Client& client, int operation, std::uint32_t events) const;
  void CloseDescriptor(Client& client);
  void Lose(Client& client, const std::string& reason);
  void HandleSignal();
  void HandleTimer();
  void ArmTimer() const;

  sockaddr_in myServer;
  LoopbackRange mySources;
  std::size_t myConnections = 0;  // tried so far
  std::size_t myConnectAtOnce;
  std::size_t myUngreeted = 0;
  ClientEvents* myEvents = nullptr;
  int myEpoll = -1;
  int myTimer = -1;
  int mySignals = -1;
  bool myIsStopped = false;
  std::deque<Client*> myQueue;
  std::vector<Client*> myArriving;  // connecting or logging in
  std::vector<Client*> myLeaving;
  std::vector<Client*> myDirty;
  std::vector<Client*> myWriting;  // WriteDirty's, kept for its memory
  std::vector<char> myBuffer;
  std::optional<Clock::time_point> myWake;
  Clock::time_point myNextLook;  // for clients that took too long
};

}  // namespace corvane::swarm
