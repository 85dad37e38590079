#pragma once

#include <functional>

#include <QCoreApplication>
#include <QTimer>

#include "client/connection.h"
#include "framework/signal.h"
#include "map/map_notice.h"

namespace corvane::map {

// Says over the map why it is empty or old: not connected, lost with the seconds until the next
// attempt, kicked or banned, nobody here. The hint of a tool takes its place.
class Banner : public MapNotice {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Banner)

 public:
  // Borrows the connection.
  Banner(client::Connection& connection, QAbstractScrollArea& map);

  // The user wants to connect.
  std::function<void()> ConnectRequested;

  // An empty hint ends it.
  void ShowHint(const QString& hint);

 private:
  void Update();
  void ShowState(const QString& text, Kind kind, const QString& button = {});

  client::Connection& myConnection;
  QString myHint;
  bool myWasOnline = false;
  QString myEnding;  // of the last session; empty if the user left
  QTimer myTimer;
  SignalConnection myStateChanged;
  SignalConnection mySessionEnded;
};

}  // namespace corvane::map
