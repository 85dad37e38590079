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

// What the pool tells a mode of the program. A client may be connected, reset or told to leave from
// within the call.
class ClientEvents {
 public:
  virtual ~ClientEvents() = default;
  virtual void Greeted(Client&) {}
  virtual void LoggedIn(Client& client) = 0;
  // The client is online, all that it was to send is on its way, and it does not rest.
  virtual void Idle(Client& client) { client.Hold(); }
  // A message for a client that is online.
  virtual void Received(Client&, std::int32_t /*command*/, std::string_view /*payload*/) {}
  // The client left and the server said "BYE".
  virtual void Left(Client&) {}
  // The connection failed or ended in any other way, at log-in or after it; the reason is for a
  // person to read.
  virtual void Lost(Client& client, Client::State before, const std::string& reason) = 0;
  // The time asked for with WakeAt has come.
  virtual void Wake(Clock::time_point) {}
  // The user asks the program to end (SIGINT or SIGTERM), or another thread called Interrupt.
  virtual void Interrupted() = 0;
};

// The connections of many clients on one thread and one epoll descriptor. Reads go through one
// large buffer, writes are gathered and go out once per client and round. Borrows the clients,
// which outlive it; each comes from the same one of the sources every time. Where none are given
// and the ports to a server on this machine run out, further connections come from further
// addresses. Throws std::system_error when the system refuses what it needs itself.
class ClientPool {
 public:
  enum class Reading { All, Discarding, Nothing };

  struct Manner {
    sockaddr_in server{};
    LoopbackRange sources{};
    // So many wait for the server's greeting at a time. Its queue of new connections may be short,
    // and a system whose queue overflows may drop a connection that its client takes for made.
    std::size_t connectAtOnce = 2;
    // A client that is not greeted for so long is lost.
    Clock::duration patience = std::chrono::seconds(30);
    // What clients that are online read of what they are sent. What is only discarded is not
    // copied.
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
  // Raises Interrupted; for other threads, where signals are not taken.
  void Interrupt() const;

  // Connects and logs in a client that is offline, after its rest and when its turn comes.
  void Connect(Client& client);
  // Sends a report of a client that is online; does nothing for any other.
  void Send(Client& client, const client::Report& report);
  // Asks the server's leave; a client that is still on its way in is just closed.
  void Leave(Client& client);
  // Ends the connection without a word, so that the server sees it reset.
  void Reset(Client& client);

  // Raises Wake once at that time, instead of at the time asked for before.
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
  void LogIn(Client& client, std::int32_t command, std::string_view payload);
  void MarkDirty(Client& client);
  void WriteDirty();
  void Write(Client& client);
  void Watch(Client& client, int operation = 0);
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
  std::vector<Client*> myWriting;  // WriteDirty's, kept for its memory
  std::vector<char> myBuffer;
  std::optional<Clock::time_point> myWake;
  std::set<std::pair<Clock::time_point, Client*>> myDeadlines;
  Clock::time_point myArmed = Clock::time_point::max();  // what the timer stands at
};

}  // namespace corvane::swarm
