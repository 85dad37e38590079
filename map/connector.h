#pragma once

#include <functional>
#include <optional>

#include <QCoreApplication>
#include <QWidget>

#include "client/connection.h"
#include "framework/signal.h"
#include "map/connect_dialog.h"
#include "map/messages_pane.h"
#include "map/places/place.h"
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
  // Opens the dialog for a place. Nothing connects before the user agrees.
  void Offer(const Place& place);

  // The user is logged in at an offered place, and wants its pictures and landmarks.
  std::function<void(const Place& place)> PlaceJoined;

 private:
  void FinishIfOnline();
  void ShowEnding(const client::Ending& ending);
  void Try(const RecentServer& server, bool keepsDigest);
  void MakeDialog();
  void DropDialog();

  client::Connection& myConnection;
  Settings& mySettings;
  MessagesPane& myMessages;
  QWidget& myWindow;
  ConnectDialog* myDialog = nullptr;       // the window owns it
  std::optional<Place> myOffer;            // in the dialog
  std::optional<RecentServer> myUnproven;  // of the current attempt; stored on success
  SignalConnection myStateChanged;
  SignalConnection mySessionEnded;
};

}  // namespace corvane::map
