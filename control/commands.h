#pragma once

#include <memory>
#include <string>
#include <vector>

#include <QByteArray>
#include <QDateTime>
#include <QPointer>

#include "control/backup.h"
#include "control/control_connection.h"
#include "control/rates.h"
#include "control/request.h"
#include "server/server_networks.h"

namespace corvane {

class App;
class ClientSocket;
class MapSocket;
class Operator;
class ServerLog;

// What the clients of the local socket can ask for, each by its "command". Borrows the application
// object, the listener, what acts on them, and the log.
class Commands {
 public:
  Commands(App& app, MapSocket& listener, Operator& actions, ServerLog& log);
  ~Commands();
  Commands(const Commands&) = delete;
  Commands& operator=(const Commands&) = delete;

  // Carries out a request and answers it. What ends the server, as the windows would, throws.
  void Run(ControlConnection& client, const QByteArray& line);

 private:
  struct Entry {
    const char* name;
    // Returns the answer; nothing where that comes later.
    QByteArray (Commands::*run)(const Request& request);
  };
  // A line of the log, to all who follow it.
  void Tell(const std::string& line);

  static const Entry kEntries[];

  QByteArray Carry(const Request& request);
  QByteArray Log(const Request& request);
  QByteArray MakeBackup(const Request& request);
  QByteArray Status(const Request& request);
  QByteArray Users(const Request& request);
  QByteArray Networks(const Request& request);
  QByteArray Bans(const Request& request);
  QByteArray Admins(const Request& request);
  QByteArray Settings(const Request& request);
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
  QByteArray Quit(const Request& request);

  // These refuse what names nobody and nothing.
  NetworkRef NetworkNamed(const std::string& name) const;
  std::shared_ptr<ClientSocket> UserOf(const Request& request) const;
  // Refuse what was not stored, and a message that would end the server.
  void ExpectStored(bool isStored) const;
  void ExpectAllHaveNetworks(const Request& request) const;

  App& myApp;
  MapSocket& myListener;
  Operator& myActions;
  ServerLog& myLog;
  std::vector<QPointer<ControlConnection>> myFollowers;
  ControlConnection* myClient = nullptr;  // whose request is carried out
  std::unique_ptr<Backup> myBackup;       // while one is made
  Rates myRates;
  const QDateTime myStart = QDateTime::currentDateTimeUtc();
};

}  // namespace corvane
