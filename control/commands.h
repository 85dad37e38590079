#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QByteArray>
#include <QPointer>

#include "control/actions.h"
#include "control/backup.h"
#include "control/control_connection.h"
#include "control/questions.h"
#include "control/request.h"
#include "framework/signal.h"

namespace corvane {

class Operator;
class ServerLog;

// What the clients of the local socket can ask for, each by its "command"; what concerns the log
// and the program as a whole is carried out here. Borrows what acts on the server.
class Commands {
 public:
  explicit Commands(Operator& op);
  Commands(const Commands&) = delete;
  Commands& operator=(const Commands&) = delete;

  // Carries out a request and answers it. What ends the server, as the windows would, throws.
  void Run(ControlConnection& client, const QByteArray& line);

  // What "reload" does, for whoever cannot be answered: what is refused is told on standard error
  // and in the log.
  void ReloadForSignal();

 private:
  struct Entry {
    const char* name;
    // Returns the answer; nothing where that comes later.
    std::function<QByteArray(const Request&)> run;
  };
  // A line of the log, to all who follow it.
  void SendToFollowers(const std::string& text);

  QByteArray Execute(const Request& request);
  QByteArray MakeBackup(const Request& request);
  QByteArray Log(const Request& request);
  QByteArray Reload(const Request& request);
  QByteArray Quit(const Request& request);

  Operator& myOperator;
  ServerLog& myLog;
  Questions myQuestions;
  Actions myActions;
  const std::vector<Entry> myEntries;
  std::vector<QPointer<ControlConnection>> myFollowers;
  ControlConnection* myClient = nullptr;  // whose request is carried out
  std::unique_ptr<Backup> myBackup;       // while one is made
  const SignalConnection myLines;
};

}  // namespace corvane
