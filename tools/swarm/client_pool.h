#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/swarm/client.h"
#include "tools/swarm/source_addresses.h"

namespace corvane::swarm {

// Events of a pool. A handler may connect, reset or send away any client.
class ClientEvents {
 public:
  virtual ~ClientEvents() = default;
  virtual void Greeted(Client&) {}
  virtual void LoggedIn(Client& client) = 0;
  // The client is online, has nothing left to send and is not resting. Raised again at once unless
  // the handler makes it send or rest.
  virtual void Idle(Client& client) { client.Hold(); }
  // A message for a client that is online.
  virtual void Received(Client&, std::int32_t /*command*/, std::string_view /*payload*/) {}
  // The client left and the server said "BYE".
  virtual void Left(Client&) {}
  // The connection failed or ended in any other way. `reason` is for a person to read.
  virtual void Lost(Client& client, Client::State before, const std::string& reason) = 0;
  // The time given to WakeAt has come.
  virtual void Wake(Clock::time_point) {}
  // SIGINT or SIGTERM, or another thread called Interrupt.
  virtual void Interrupted() = 0;
};

// Connects many clients to a server on one thread, with one epoll descriptor. Reads share one large
// buffer; output is collected and sent once per client and turn of the loop. Each client always
// connects from the same source address. Borrows the clients, which outlive it. Only Interrupt may
// be called from another thread. Throws std::system_error if the system refuses a descriptor that
// the pool itself needs.
class ClientPool {
 public:
  enum class Reading { All, Discarding, Nothing };

  struct Manner {
    sockaddr_in server{};
    LoopbackRange sources{};
    // How many clients connect or wait for the greeting at a time. If the server's accept backlog
    // overflows, the system may drop a connection that looks established to the client.
    std::size_t connectAtOnce = 2;
    // A client that is not greeted within this time is lost.
    Clock::duration patience = std::chrono::seconds(30);
    // What online clients do with their input. Discarded input is not copied.
    Reading reading = Reading::All;
    bool takesSignals = true;
  };

  explicit ClientPool(const Manner& manner);
  ~ClientPool();
  ClientPool(const ClientPool&) = delete;
  ClientPool& operator=(const ClientPool&) = delete;

  // Runs until Stop, raising events.
  void Run(ClientEvents& events);
  void Stop() { myIsStopped = true; }
  // Raises Interrupted. For other threads; only without takesSignals.
  void Interrupt() const;

  // Connects and logs in an offline client, once its rest is over and its turn has come.
  void Connect(Client& client);
  // Sends a report. Does nothing unless the client is online.
  void Send(Client& client, const client::Report& report);
  // Asks the server to leave. A client that is not logged in yet is just closed.
  void Leave(Client& client);
  // Resets the connection.
  void Reset(Client& client);

  // Raises Wake once at that time. Replaces an earlier call's time.
  void WakeAt(Clock::time_point time) { myWake = time; }

 private:
  void StartConnecting();
  void StartConnecting(Client& client);
  void Wait();
  void ArmTimer();
  void Handle(Client& client, std::uint32_t ready);
  void FinishConnecting(Client& client);
  void Read(Client& client);
  void Receive(Client& client, std::int32_t command, std::string_view payload);
  void Login(Client& client, std::int32_t command, std::string_view payload);
  void MarkDirty(Client& client);
  void WriteDirty();
  void Write(Client& client);
  void Watch(Client& client, int operation = 0) const;
  void CloseDescriptor(Client& client);
  void Lose(Client& client, const std::string& reason);
  void SetDeadline(Client& client, std::optional<Clock::time_point> time);
  void RunTimers();
  void PassDeadline(Client& client);

  const Manner myManner;
  SourceAddresses mySources;
  std::size_t mySourcesGiven = 0;  // to clients
  std::size_t myUngreeted = 0;
  ClientEvents* myEvents = nullptr;
  int myEpoll = -1;
  int myTimer = -1;
  int myInterrupts = -1;
  bool myIsStopped = false;
  std::deque<Client*> myQueue;
  std::vector<Client*> myDirty;
  std::vector<Client*> myWriting;  // used by WriteDirty, kept for its memory
  std::vector<char> myBuffer;
  std::optional<Clock::time_point> myWake;
  std::set<std::pair<Clock::time_point, Client*>> myDeadlines;
  Clock::time_point myArmed = Clock::time_point::max();  // when the timer expires
};

}  // namespace corvane::swarm
