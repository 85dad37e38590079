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
// Closing it leaves its sessions connected; destroying it ends them.
class MapSocket : public NetworkHost {
 public:
  MapSocket(PollLoop& loop, DatabaseConnection& serverdb, LocationLookup& locations, Rules rules);
  ~MapSocket() override;

  // Events.
  Signal<MapSocket&, const std::string&> StatusMessage;
  Signal<MapSocket&, const std::shared_ptr<ClientSocket>&> UserLoggedIn;
  Signal<MapSocket&, const std::shared_ptr<ClientSocket>&> UserLoggedOut;

  // Event: a status line, for the log. May be unset.
  std::function<void(const std::string&)> Logged;
  // Event: an administrator's action, as a LogLine, for the log and the audit log. May be unset.
  std::function<void(const std::string&)> Audited;

  void CallStatusMessage(StatusParts parts) override;
  void CallUserLoggedIn(ClientSocket& client);
  void CallUserLoggedOut(ClientSocket& client);

  // Relays the sender's state to the other members of its network (command 5). They get it with the
  // next flush, in one piece with the other reports since the last. Fails the sender if its report
  // is too long for the memory that is left.
  void BroadcastPosition(ClientSocket& sender);

  // Notifies the rest of the network that a user left (command 6).
  void ClientDisconnect(ClientSocket& leaving);

 protected:
  bool Event_Accepted(const os::Endpoint& peer) override;
  std::shared_ptr<TCPSocket> Event_AddSocket() override;
  void Event_Error(std::int32_t code) override;
  void Event_HeaderMissing(const os::Endpoint& proxy) override;
  void Event_HandedOff(const std::shared_ptr<TCPSocket>& socket) override;
  void Event_GivenBack(const std::shared_ptr<TCPSocket>& socket) override;

 private:
  // Still connected after the listener was closed.
  std::vector<std::weak_ptr<ClientSocket>> myUnlinked;
};

}  // namespace corvane
