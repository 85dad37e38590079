#pragma once

#include <optional>

#include <QCoreApplication>
#include <QWidget>

#include "client/connection.h"
#include "map/connect_dialog.h"
#include "map/messages_pane.h"
#include "map/settings.h"

namespace corvane::map {

// Brings the user into a network: asks where, tries, says what was refused, and remembers what
// worked.
class Connector {
 public:
  // Borrows all four.
  Connector(client::Connection& connection, Settings& settings, MessagesPane& messages,
            QWidget& window);

  // Opens the dialog, with what was typed into it if no attempt has worked since.
  void Ask();
  // Opens the dialog and tries what the command line says.
  void TryGiven(const RecentServer& server);

  // The connection's state has changed.
  void StateChanged();
  // The connection has ended.
  void SessionEnded(const client::Ending& ending);

 private:
  void Try(const RecentServer& server, bool keepsDigest);

  client::Connection& myConnection;
  Settings& mySettings;
  MessagesPane& myMessages;
  QWidget& myWindow;
  ConnectDialog* myDialog = nullptr;       // the window owns it
  std::optional<RecentServer> myUnproven;  // to be remembered when it works
};

}  // namespace corvane::map
