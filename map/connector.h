#pragma once

#include <optional>

#include <QCoreApplication>
#include <QWidget>

#include "client/connection.h"
#include "framework/signal.h"
#include "map/connect_dialog.h"
#include "map/messages_pane.h"
#include "map/settings.h"

namespace corvane::map {

// Logs the user in with a ConnectDialog: starts attempts, shows why one failed, asks whether to
// trust a certificate, and stores the server in the settings after a success.
class Connector {
 public:
  // Borrows all four. `window` owns the dialog.
  Connector(client::Connection& connection, Settings& settings, MessagesPane& messages,
            QWidget& window);

  // Opens the dialog. It still has the last input, unless an attempt with that has succeeded.
  void Ask();
  // Opens the dialog and connects with the command line's values.
  void TryGiven(const RecentServer& server);

 private:
  void FinishIfOnline();
  void ShowEnding(const client::Ending& ending);
  void Try(const RecentServer& server, bool keepsDigest);

  client::Connection& myConnection;
  Settings& mySettings;
  MessagesPane& myMessages;
  QWidget& myWindow;
  ConnectDialog* myDialog = nullptr;       // the window owns it
  std::optional<RecentServer> myUnproven;  // of the current attempt; stored on success
  SignalConnection myStateChanged;
  SignalConnection mySessionEnded;
};

}  // namespace corvane::map
