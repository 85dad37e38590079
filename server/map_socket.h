#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/signal.h"
#include "server/network_host.h"

namespace corvane {

// The server's listener: admits connections, makes a session for each, relays their positions to
// their networks and raises the events that the console shows. Owns its sessions through the pool.
// Closing it leaves its sessions connected; they end with it at the latest.
class MapSocket : public NetworkHost {
 public:
  MapSocket(PollLoop& loop, DatabaseConnection& serverdb, LocationLookup& locations, Rules rules);
  ~MapSocket() override;

  // Events.
  Signal<MapSocket&, const std::string&> StatusMessage;
  Signal<MapSocket&, const std::shared_ptr<ClientSocket>&> UserLoggedIn;
  Signal<MapSocket&, const std::shared_ptr<ClientSocket>&> UserLoggedOut;

  // Events: a status line for the log; and what an administrator did, as LogLine makes it, for the
  // log and its audit. A handler that is not set is not called.
  std::function<void(const std::string&)> Logged;
  std::function<void(const std::string&)> Audited;

  void CallStatusMessage(StatusParts parts) override;
  void CallUserLoggedIn(ClientSocket& client);
  void CallUserLoggedOut(ClientSocket& client);

  // Sends the sender's state to every other session of its network (command 5), together with what
  // else is reported until the next flush. Fails the sender if its report is too long for the
  // memory that is left.
  void BroadcastPosition(ClientSocket& sender);

  // Notifies the rest of the network that a user left (command 6).
  void ClientDisconnect(ClientSocket& leaving);

 protected:
  bool Event_Accepted(const os::Endpoint& peer) override;
  std::shared_ptr<TCPSocket> Event_AddSocket() override;
  void Event_Error(std::int32_t code) override;
  void Event_HandedOff(const std::shared_ptr<TCPSocket>& socket) override;
  void Event_GivenBack(const std::shared_ptr<TCPSocket>& socket) override;

 private:
  // Still connected after the listener was closed.
  std::vector<std::weak_ptr<ClientSocket>> myUnlinked;
};

}  // namespace corvane
