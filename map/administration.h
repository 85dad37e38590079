#pragma once

#include <functional>
#include <string>

#include <QCoreApplication>
#include <QPointer>
#include <QWidget>

#include "client/connection.h"
#include "map/bans_dialog.h"

namespace corvane::map {

// What an administrator may do, with the dialogs that ask for the rest. The user is named by its
// name: it may go while a dialog is open.
class Administration {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Administration)

 public:
  // Borrows both.
  Administration(client::Connection& connection, QWidget& window);

  // A line for the pane of messages, which writes out what cannot be seen.
  std::function<void(const QString&)> Says;

  void Kick(const std::string& user);
  void Ban(const std::string& user);
  void SendMessage();
  void ShowBans();

 private:
  bool CanName(const std::string& user) const;

  client::Connection& myConnection;
  QWidget& myWindow;
  QPointer<BansDialog> myBans;
};

}  // namespace corvane::map
