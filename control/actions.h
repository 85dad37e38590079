#pragma once

#include <memory>

#include <QByteArray>

#include "control/request.h"

namespace corvane {

class ClientSocket;
class Operator;

// The commands of the local socket that change something: networks, users, bans, administrators
// and settings. (Questions has the commands that only ask, Commands those for the log and the
// program.) Each method carries out one command through the Operator, which it borrows, and returns
// the answer. Throws Refused if the command is not carried out, and NilObjectException if a message
// that the client forced ends the server.
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
  // Makes the networks match the database. The service manager sees a reload.
  QByteArray Reload(const Request& request);

 private:
  // The user that the request names. Refuses if there is none.
  std::shared_ptr<ClientSocket> UserOf(const Request& request) const;
  // Refuse a change that was not stored, and a message that would end the server.
  void ExpectStored(bool isStored) const;
  void ExpectAllHaveNetworks(const Request& request) const;

  Operator& myOperator;
};

}  // namespace corvane
