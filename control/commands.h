#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QByteArray>
#include <QPointer>

#include "control/actions.h"
#include "control/backup.h"
#include "control/ban_actions.h"
#include "control/control_connection.h"
#include "control/event_feed.h"
#include "control/network_transfer.h"
#include "control/questions.h"
#include "control/request.h"
#include "framework/signal.h"

namespace corvane {

class Operator;
class ServerLog;

// Carries out the requests of the local socket by their "command": Questions answers those that
// only ask, Actions those that change something, and this class those for the log and the program.
// Sends new lines of the log to clients that follow it. Runs one request at a time, but answers
// backups and imports later. Borrows the Operator.
class Commands {
 public:
  explicit Commands(Operator& op);
  Commands(const Commands&) = delete;
  Commands& operator=(const Commands&) = delete;

  // Carries out a request and answers it. Passes on the exception of a message that ends the
  // server.
  void Run(ControlConnection& client, const QByteArray& line);

  // "reload" for a caller that gets no answer: a refusal goes to standard error and the log.
  void ReloadForSignal();

 private:
  struct Entry {
    const char* name;
    // Returns the answer, or nothing if it comes later.
    std::function<QByteArray(const Request&)> run;
  };
  // Sends a line of the log.
  void SendToFollowers(const std::string& text);

  // Answers the current request.
  std::function<void(const QByteArray&)> LaterAnswer();

  QByteArray Execute(const Request& request);
  QByteArray MakeBackup(const Request& request);
  QByteArray Log(const Request& request);
  QByteArray Events(const Request& request);
  QByteArray Reload(const Request& request);
  QByteArray Quit(const Request& request);

  Operator& myOperator;
  ServerLog& myLog;
  Questions myQuestions;
  Actions myActions;
  BanActions myBanActions;
  NetworkTransfer myNetworkTransfer;
  const std::vector<Entry> myEntries;
  EventFeed myEvents;
  std::vector<QPointer<ControlConnection>> myFollowers;  // of the log
  ControlConnection* myClient = nullptr;                 // sent the current request
  std::unique_ptr<Backup> myBackup;                      // null if none is being made
  const SignalConnection myLines;
};

}  // namespace corvane
