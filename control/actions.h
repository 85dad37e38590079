#pragma once

#include <memory>

#include <QByteArray>

#include "control/request.h"

namespace corvane {

class ClientSocket;
class Operator;

// What clients of the local socket may have done to networks, users, bans, administrators and
// settings, one method a command, which returns the answer. What ends the server, as the windows
// would, throws. Borrows what acts on the server.
class Actions {
 public:
  explicit Actions(Operator& op) : myOperator(op) {}

  QByteArray AddNetwork(const Request& request);
  QByteArray EditNetwork(const Request& request);
  QByteArray DeleteNetwork(const Request& request);
  QByteArray DisconnectNetwork(const Request& request);
  QByteArray Kick(const Request& request);
  QByteArray Ban(const Request& request);
  QByteArray BanAddress(const Request& request);
  QByteArray Unban(const Request& request);
  QByteArray Disconnect(const Request& request);
  QByteArray Grant(const Request& request);
  QByteArray Revoke(const Request& request);
  QByteArray Message(const Request& request);
  QByteArray Set(const Request& request);
  // Has the networks be as the database says; the service manager is told meanwhile.
  QByteArray Reload(const Request& request);

 private:
  // Refuses what names nobody.
  std::shared_ptr<ClientSocket> UserOf(const Request& request) const;
  // Says what was banned, and what holds if that is not stored.
  QByteArray BannedLine(const std::string& text, bool isStored) const;
  // Refuse what was not stored, and a message that would end the server.
  void ExpectStored(bool isStored) const;
  void ExpectAllHaveNetworks(const Request& request) const;

  Operator& myOperator;
};

}  // namespace corvane
