#pragma once

#include <functional>
#include <optional>

#include <QCoreApplication>
#include <QPointer>
#include <QWidget>

#include "client/connection.h"
#include "viewer/connect_dialog.h"
#include "viewer/settings.h"

namespace corvane::viewer {

// Brings the user into a network: asks where, tries, says what was refused, and remembers what
// worked.
class LogIn {
 public:
  // Borrows all three.
  LogIn(client::Connection& connection, Settings& settings, QWidget& window);

  // A line for the pane of messages, which writes out what cannot be seen.
  std::function<void(const QString&)> Says;

  // Opens the dialog, unless it is open.
  void Ask();
  void Try(const RecentServer& server, bool keepsDigest);

  // The connection's state has changed.
  void Follow();
  // The connection has ended.
  void End(const client::Ending& ending);

 private:
  client::Connection& myConnection;
  Settings& mySettings;
  QWidget& myWindow;
  QPointer<ConnectDialog> myDialog;
  std::optional<RecentServer> myUnproven;  // to be remembered when it works
};

}  // namespace corvane::viewer
