#pragma once

#include <string>

#include <QCoreApplication>
#include <QPointer>
#include <QWidget>

#include "client/connection.h"
#include "framework/signal.h"
#include "map/bans_dialog.h"
#include "map/messages_pane.h"

namespace corvane::map {

// The administrator's actions, with the dialogs that ask for reasons and texts. Users are given by
// name, because a member may leave while a dialog is open.
class Administration {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Administration)

 public:
  // Borrows all three. `window` owns the dialogs.
  Administration(client::Connection& connection, MessagesPane& messages, QWidget& window);

  // Asks first.
  void Kick(const std::string& user);
  void Ban(const std::string& user);
  void SendMessage();
  void ShowBans();

 private:
  bool CanName(const std::string& user) const;

  client::Connection& myConnection;
  MessagesPane& myMessages;
  QWidget& myWindow;
  QPointer<BansDialog> myBans;
  SignalConnection myBansReceived;
};

}  // namespace corvane::map
